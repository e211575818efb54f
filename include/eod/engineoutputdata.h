#ifndef EOD_ENGINEOUTPUTDATA_H
#define EOD_ENGINEOUTPUTDATA_H

// One processed camera frame: a numbered envelope whose sub-records are everything the
// engine produced for the frame. Encoding: record header (id 9), flag byte, 4-byte frame
// number, sub-object count, sub-records in ascending object id order.

#include <string>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class EngineStateOutputData;
class EyeOutputData;
class FaceOutputDataV2;
class FaceSetOutputData;
class FeatureSetsByCamera;
class GPSOutputData;
class GPSOutputDataV2;
class HeadOutputDataV2;
class ImageCollectionOutputData;
class InertiaOutputData;
class TimingOutputData;
class WorldOutputDataV2;

class EngineOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 9;
    static constexpr char ENGINE_OUTPUT_DATA_ID = 9;

    EngineOutputData() = default;
    EngineOutputData(const EngineOutputData&) = default;
    EngineOutputData& operator=(const EngineOutputData&) = default;
    ~EngineOutputData() override;

    char objectID() const override { return THIS_OBJECT_ID; }
    EngineOutputData* clone() const override;
    // Several frames may sit side by side in one parent.
    bool forbidDuplicateSiblings() const override { return false; }

    unsigned int frameNum() const { return _frame_num; }
    void setFrameNum(unsigned int frame_num) { _frame_num = frame_num; }

    // The frame's sub-record of each kind, or null when it has none. A sub-record stored
    // under the kind's id but of another class is a SerializableError.
    boost::shared_ptr<TimingOutputData> timingOutputData();
    boost::shared_ptr<TimingOutputData const> timingOutputData() const;
    boost::shared_ptr<EngineStateOutputData> engineStateOutputData();
    boost::shared_ptr<EngineStateOutputData const> engineStateOutputData() const;
    boost::shared_ptr<WorldOutputDataV2> worldOutputData();
    boost::shared_ptr<WorldOutputDataV2 const> worldOutputData() const;
    boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera();
    boost::shared_ptr<FeatureSetsByCamera const> featureSetsByCamera() const;
    boost::shared_ptr<ImageCollectionOutputData> imagesOutputData();
    boost::shared_ptr<ImageCollectionOutputData const> imagesOutputData() const;
    boost::shared_ptr<InertiaOutputData> inertiaOutputData();
    boost::shared_ptr<InertiaOutputData const> inertiaOutputData() const;
    boost::shared_ptr<GPSOutputData> gpsOutputData();
    boost::shared_ptr<GPSOutputData const> gpsOutputData() const;
    boost::shared_ptr<GPSOutputDataV2> gpsOutputDataV2();
    boost::shared_ptr<GPSOutputDataV2 const> gpsOutputDataV2() const;

    // Head, face and eye records live in the face sets (one per tracked face); frames
    // written by older versions hold them directly. These return the record of the first
    // face set when it has one, and otherwise the record stored directly in the frame: the
    // one upgradeFaceSetOutputData (upgrade.h) would leave in the first face set. They never
    // change the frame, so a first-generation record (HeadOutputData, FaceOutputData) is seen
    // only after upgrade(frame).
    boost::shared_ptr<HeadOutputDataV2> headOutputData();
    boost::shared_ptr<HeadOutputDataV2 const> headOutputData() const;
    boost::shared_ptr<FaceOutputDataV2> faceOutputData();
    boost::shared_ptr<FaceOutputDataV2 const> faceOutputData() const;
    boost::shared_ptr<EyeOutputData> eyeOutputData();
    boost::shared_ptr<EyeOutputData const> eyeOutputData() const;

    // The index-th face set (null past the last), and how many there are.
    boost::shared_ptr<FaceSetOutputData> face(unsigned char index);
    boost::shared_ptr<FaceSetOutputData const> face(unsigned char index) const;
    unsigned char numFaces() const;

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

    // Extensions of the per-object log files: ".tql" and ".itql".
    static const std::wstring& LOGFILE_EXTENSION();
    static const std::wstring& LOGFILE_INDEX_EXTENSION();

protected:
    // Removes every sub-record, sets the frame number to 0 and enables serialisation.
    void reset();

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override { return 4; }

private:
    template <class T>
    boost::shared_ptr<T> faceSetRecord(char id) const;

    unsigned int _frame_num = 0;
};

// The same look-ups as the member accessors.
boost::shared_ptr<TimingOutputData> timingOutputData(EngineOutputData& frame);
boost::shared_ptr<EngineStateOutputData> engineStateOutputData(EngineOutputData& frame);
boost::shared_ptr<WorldOutputDataV2> worldOutputData(EngineOutputData& frame);
boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera(EngineOutputData& frame);
boost::shared_ptr<ImageCollectionOutputData> imageCollectionOutputData(EngineOutputData& frame);
boost::shared_ptr<InertiaOutputData> inertiaOutputData(EngineOutputData& frame);
boost::shared_ptr<HeadOutputDataV2> headOutputData(EngineOutputData& frame);
boost::shared_ptr<FaceOutputDataV2> faceOutputData(EngineOutputData& frame);
boost::shared_ptr<EyeOutputData> eyeOutputData(EngineOutputData& frame);
boost::shared_ptr<FaceSetOutputData> faceSetOutputData(EngineOutputData& frame,
                                                       unsigned char index);
unsigned char numFaceSetOutputDataObjects(EngineOutputData& frame);

// The frame's sub-record of each kind, added as a new default record when missing.
boost::shared_ptr<TimingOutputData> addTimingOutputDataIfMissing(EngineOutputData& frame);
boost::shared_ptr<EngineStateOutputData> addEngineStateOutputDataIfMissing(
    EngineOutputData& frame);
boost::shared_ptr<WorldOutputDataV2> addWorldOutputDataIfMissing(EngineOutputData& frame);
boost::shared_ptr<FeatureSetsByCamera> addFeatureSetsByCameraIfMissing(EngineOutputData& frame);
boost::shared_ptr<ImageCollectionOutputData> addImageCollectionOutputDataIfMissing(
    EngineOutputData& frame);
boost::shared_ptr<InertiaOutputData> addInertiaOutputDataIfMissing(EngineOutputData& frame);
// The first face set, added when the frame has none.
boost::shared_ptr<FaceSetOutputData> addFaceSetOutputDataIfMissing(EngineOutputData& frame);
// These first bring the frame to the face-set layout with upgradeFaceSetOutputData
// (upgrade.h): head, face and eye records stored directly in the frame move into the first
// face set, first-generation ones converted (one the face set already has of that kind
// stays, and the frame's own is left where it is). Then they work inside the first face set.
boost::shared_ptr<HeadOutputDataV2> addHeadOutputDataIfMissing(EngineOutputData& frame);
boost::shared_ptr<FaceOutputDataV2> addFaceOutputDataIfMissing(EngineOutputData& frame);
boost::shared_ptr<EyeOutputData> addEyeOutputDataIfMissing(EngineOutputData& frame);

}  // namespace eod
}  // namespace tq

#endif
