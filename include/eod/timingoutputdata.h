#ifndef EOD_TIMINGOUTPUTDATA_H
#define EOD_TIMINGOUTPUTDATA_H

// The time stamps of one frame. Engine-specific data (22 bytes): experiment time (double),
// frame time seconds (int), frame time milliseconds (unsigned short), approximate delay
// (float), annotation label id (int). No setter checks its argument.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class TimingOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 10;
    static constexpr char TIMING_OUTPUT_DATA_ID = 10;

    TimingOutputData() = default;
    TimingOutputData(const TimingOutputData&) = default;
    TimingOutputData& operator=(const TimingOutputData&) = default;
    ~TimingOutputData() override;
    void copyFrom(const TimingOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    TimingOutputData* clone() const override;

    double experimentTime() const { return _experiment_time; }
    void setExperimentTime(double time) { _experiment_time = time; }
    int frameTimeSecs() const { return _frame_time_secs; }
    void setFrameTimeSeconds(int secs) { _frame_time_secs = secs; }
    unsigned short frameTimeMSecs() const { return _frame_time_msecs; }
    void setFrameTimeMilliseconds(unsigned short msecs) { _frame_time_msecs = msecs; }
    float approxDelay() const { return _approx_delay; }
    void setApproxDelay(float delay) { _approx_delay = delay; }
    int annotationLabelID() const { return _annotation_label_id; }
    void setAnnotationLabelID(int id) { _annotation_label_id = id; }

    // "EXPERIMENT_TIME", "GMT_S", "GMT_MS", "DELAY", "ANNOTATION_ID".
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    double _experiment_time = 0.0;
    int _frame_time_secs = 0;
    unsigned short _frame_time_msecs = 0;
    float _approx_delay = 0.0f;
    int _annotation_label_id = -1;
};

}  // namespace eod
}  // namespace tq

#endif
