#ifndef EOD_EYECLOSUREOUTPUTDATA_H
#define EOD_EYECLOSUREOUTPUTDATA_H

// How far each eye is closed, and blinks. Engine-specific data, 33 bytes: right and left
// closure, right and left closure confidence, calibration status (floats), blinking (bool),
// blink frequency, average blink duration, PERCLOS (floats).
//
// Per-eye values take eye_id RIGHT_EYE or LEFT_EYE ("eye_id neither LEFT_EYE nor
// RIGHT_EYE"). Ranges are inclusive and checked in double; NaN fails every range. A failed
// setter (std::invalid_argument) leaves the record unchanged. Values read from bytes are kept
// as read.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class EyeClosureOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 12;
    static constexpr char EYE_CLOSURE_OUTPUT_DATA_ID = 12;

    EyeClosureOutputData();
    EyeClosureOutputData(const EyeClosureOutputData&) = default;
    EyeClosureOutputData& operator=(const EyeClosureOutputData&) = default;
    ~EyeClosureOutputData() override;
    void copyFrom(const EyeClosureOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    EyeClosureOutputData* clone() const override;

    // 0 open .. 1 closed.
    float eyeClosure(int eye_id) const;
    float eyeClosureConfidence(int eye_id) const;
    float eyeClosureCalibStatus() const { return _eye_closure_calib_status; }
    bool blinking() const { return _blinking; }
    float blinkFrequency() const { return _blink_frequency; }
    float averageBlinkDuration() const { return _average_blink_duration; }
    // Proportion of time the eyes are closed.
    float perclos() const { return _perclos; }

    // 0..1: "closure outside range 0..1", "confidence outside range 0..1", "calib_status
    // outside range 0..1", "perclos outside range 0..1".
    void setEyeClosure(int eye_id, float closure);
    void setEyeClosureConfidence(int eye_id, float confidence);
    void setEyeClosureCalibStatus(float calib_status);
    void setPerclos(float perclos);
    // >= 0: "frequency less than zero", "duration less than zero".
    void setBlinkFrequency(float frequency);
    void setAverageBlinkDuration(float duration);
    void setBlinking(bool blinking) { _blinking = blinking; }

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    std::vector<float> _eye_closure_frac;
    std::vector<float> _eye_closure_confidence;
    float _eye_closure_calib_status = 0;
    bool _blinking = false;
    float _blink_frequency = 0;
    float _average_blink_duration = 0;
    float _perclos = 0;
};

}  // namespace eod
}  // namespace tq

#endif
