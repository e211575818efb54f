#ifndef EOD_FACEOUTPUTDATA_H
#define EOD_FACEOUTPUTDATA_H

// First-generation face landmark record. Engine-specific data:
//
//   number of landmarks  4 bytes, signed, >= 0
//   per landmark         id (4 bytes), x, y, z, u, v (floats): 24 bytes, ascending id
//
// So the own data is 4 + 24 x landmarks bytes (after the flag byte). A face texture may
// follow as the record's child (FaceTextureOutputData).

#include <map>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/facelandmark.h>
#include <eod/facetextureoutputdata.h>

namespace tq {
namespace eod {

class FaceOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 91;

    FaceOutputData() = default;
    FaceOutputData(const FaceOutputData&) = default;
    FaceOutputData& operator=(const FaceOutputData&) = default;
    ~FaceOutputData() override;
    void copyFrom(const FaceOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    FaceOutputData* clone() const override;

    // Inserts the landmark or replaces the one of its id. Ids 800..899 belong to the
    // texture mask: usage error "invalid landmark".
    void addLandmark(const FaceLandmark& landmark);
    // In ascending id order.
    const std::map<int, FaceLandmark>& faceLandmarks() const { return _landmarks; }
    bool hasLandmark(int id) const { return _landmarks.count(id) != 0; }
    // True only if every id is present.
    bool hasAllLandmarks(const std::vector<int>& ids) const;
    // Copy the value and return true when the landmark exists; otherwise false.
    bool faceCoordinate(int id, FaceCoordinate& out) const;
    bool faceTextureCoordinate(int id, FaceTextureCoordinate& out) const;
    // Sets the coordinate and keeps the texture coordinate; for an id without a landmark it
    // adds one with a zero texture coordinate. Ids 800..899: usage error "invalid landmark".
    void setFaceCoordinate(int id, const FaceCoordinate& coordinate);
    // Sets x, y and z of the landmark to zero, keeping it and its texture coordinate; does
    // nothing for an id without a landmark.
    void zeroLandmark(int id);
    // Removes the landmark of the id, if any.
    void clearLandmark(int id) { _landmarks.erase(id); }
    void clearLandmarks() { _landmarks.clear(); }

    // The face texture child, or null.
    boost::shared_ptr<FaceTextureOutputData> faceTexture();
    boost::shared_ptr<FaceTextureOutputData const> faceTexture() const;
    // Makes the texture the record's child in place of any earlier one; a null texture
    // throws the composite's SerializableError and leaves the record unchanged.
    void addFaceTexture(const boost::shared_ptr<FaceTextureOutputData>& texture);

    // 190 columns: "FLM_<id>_X", "_Y", "_Z" for each id of FLM_IDS_ALL_FIXED, then "_U", "_V"
    // for each; absent landmarks print zeros.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    // Clears the landmarks first and stores each landmark under its id, mask ids (800..899)
    // included: the id check is the setters'. A negative count and a count the bytes cannot
    // hold throw SerializableError.
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    std::map<int, FaceLandmark> _landmarks;
};

}  // namespace eod
}  // namespace tq

#endif
