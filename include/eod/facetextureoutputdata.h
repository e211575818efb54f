#ifndef EOD_FACETEXTUREOUTPUTDATA_H
#define EOD_FACETEXTUREOUTPUTDATA_H

// The texture image of a face and its mask landmarks (ids 800..899). The image is the
// record's one child, an ImageOutputData. Engine-specific data:
//
//   face texture type        4 bytes, signed
//   pixel transform          4 floats
//   number of mask landmarks 4 bytes, signed, >= 0
//   per mask landmark        id (4 bytes), x, y, z, u, v (floats): 24 bytes, ascending id
//
// So the own data is 24 + 24 x mask landmarks bytes (after the flag byte).

#include <map>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/facelandmark.h>
#include <eod/imageoutputdata.h>

namespace tq {
namespace eod {

class FaceTextureOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 92;

    // Texture type codes are opaque to this library, like image formats; any int is kept.
    enum FaceTextureType : int { INVALID_FACE_TEXTURE_TYPE = -1 };

    FaceTextureOutputData() = default;
    FaceTextureOutputData(const FaceTextureOutputData&) = default;
    FaceTextureOutputData& operator=(const FaceTextureOutputData&) = default;
    ~FaceTextureOutputData() override;
    void copyFrom(const FaceTextureOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    FaceTextureOutputData* clone() const override;

    // Stores the type and makes the image the record's child, in place of any earlier one.
    // Refused, the record unchanged: type INVALID_FACE_TEXTURE_TYPE (usage error "invalid
    // type, face_texure values") and a null image (SerializableError of the composite).
    void addFaceTexture(FaceTextureType type, const boost::shared_ptr<ImageOutputData>& image);
    // The image child, or null.
    boost::shared_ptr<ImageOutputData> faceTexture();
    boost::shared_ptr<ImageOutputData const> faceTexture() const;
    // INVALID_FACE_TEXTURE_TYPE until a texture is added.
    FaceTextureType faceTextureType() const { return static_cast<FaceTextureType>(_type); }

    // Four values, zeros by default.
    const std::vector<float>& pixelTransform() const { return _pixel_transform; }
    void setPixelTransform(float a, float b, float c, float d);

    // Inserts the landmark or replaces the one of its id. Usage error for an id outside
    // 800..899: "landmark.id outside the range 800..899".
    void addMaskLandmark(const FaceLandmark& landmark);
    const std::map<int, FaceLandmark>& faceMaskLandmarks() const { return _mask_landmarks; }
    // Copy the value and return true when the mask landmark exists; otherwise false.
    bool faceMaskCoordinate(int id, FaceCoordinate& out) const;
    bool faceMaskTextureCoordinate(int id, FaceTextureCoordinate& out) const;

    // Columns "FACE_TEXTURE_TYPE", "PIXEL_TRANSFORM_0" to "_3", "NUM_MASK_LANDMARKS"; the
    // image's columns follow as a child's.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    // Only an ImageOutputData may become a child; anything else throws SerializableError
    // "FaceTextureOutputData::doAddSubObject - object not derived from ImageOutputData".
    void doAddSubObject(const boost::shared_ptr<Serializable>& object) override;

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    // Stores each mask landmark under its id, ids outside 800..899 included: the id check is
    // addMaskLandmark's. A negative count and a count the bytes cannot hold throw
    // SerializableError.
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    int _type = INVALID_FACE_TEXTURE_TYPE;
    std::vector<float> _pixel_transform = std::vector<float>(ARRAY_SIZE_4D_DATA, 0.0f);
    std::map<int, FaceLandmark> _mask_landmarks;
};

}  // namespace eod
}  // namespace tq

#endif
