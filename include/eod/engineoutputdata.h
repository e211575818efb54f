#ifndef EOD_ENGINEOUTPUTDATA_H
#define EOD_ENGINEOUTPUTDATA_H

// One processed camera frame: a numbered envelope whose sub-records are everything the
// engine produced for the frame. Encoding: record header (id 9), flag byte, 4-byte frame
// number, sub-object count, sub-records in ascending object id order.

#include <string>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class EngineStateOutputData;
class FeatureSetsByCamera;
class GPSOutputData;
class GPSOutputDataV2;
class InertiaOutputData;
class TimingOutputData;

class EngineOutputData : public EngineOutputBase {
public:
    static const char THIS_OBJECT_ID = 9;
    static const char ENGINE_OUTPUT_DATA_ID = 9;

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
    unsigned int _frame_num = 0;

public:
    // The frame's sub-record of each kind, or null when it has none.
    boost::shared_ptr<TimingOutputData> timingOutputData();
    boost::shared_ptr<TimingOutputData const> timingOutputData() const;
    boost::shared_ptr<EngineStateOutputData> engineStateOutputData();
    boost::shared_ptr<EngineStateOutputData const> engineStateOutputData() const;
    boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera();
    boost::shared_ptr<FeatureSetsByCamera const> featureSetsByCamera() const;
    boost::shared_ptr<InertiaOutputData> inertiaOutputData();
    boost::shared_ptr<InertiaOutputData const> inertiaOutputData() const;
    boost::shared_ptr<GPSOutputData> gpsOutputData();
    boost::shared_ptr<GPSOutputData const> gpsOutputData() const;
    boost::shared_ptr<GPSOutputDataV2> gpsOutputDataV2();
    boost::shared_ptr<GPSOutputDataV2 const> gpsOutputDataV2() const;
};

// The frame's sub-record of each kind, or null when it has none.
boost::shared_ptr<TimingOutputData> timingOutputData(EngineOutputData& frame);
boost::shared_ptr<EngineStateOutputData> engineStateOutputData(EngineOutputData& frame);
boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera(EngineOutputData& frame);
boost::shared_ptr<InertiaOutputData> inertiaOutputData(EngineOutputData& frame);

// The frame's sub-record of each kind, added as a new default record when missing.
boost::shared_ptr<TimingOutputData> addTimingOutputDataIfMissing(EngineOutputData& frame);
boost::shared_ptr<EngineStateOutputData> addEngineStateOutputDataIfMissing(
    EngineOutputData& frame);
boost::shared_ptr<FeatureSetsByCamera> addFeatureSetsByCameraIfMissing(EngineOutputData& frame);
boost::shared_ptr<InertiaOutputData> addInertiaOutputDataIfMissing(EngineOutputData& frame);

}  // namespace eod
}  // namespace tq

#endif
