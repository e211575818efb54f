#ifndef EOD_HEADOUTPUTDATA_H
#define EOD_HEADOUTPUTDATA_H

// First-generation head pose, single precision, rotation as Euler angles. Engine-specific
// data, 54 bytes: tracking state (char), head position x, y, z and rotation x, y, z (floats),
// position confidence (float), model quality level (char), right then left eyeball centre
// x, y, z (floats).
//
// Setters check and then store, so a failed setter (std::invalid_argument) leaves the record
// unchanged. The tracking state and the model quality level take any byte value.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class HeadOutputDataV2;

class HeadOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 11;
    static constexpr char HEAD_OUTPUT_DATA_ID = 11;

    HeadOutputData();
    HeadOutputData(const HeadOutputData&) = default;
    HeadOutputData& operator=(const HeadOutputData&) = default;
    ~HeadOutputData() override;
    void copyFrom(const HeadOutputData& other);
    // From the current generation (docs/versioning.md): doubles rounded to float, tracking
    // as 1 or 0, the Euler angles kept and the quaternion dropped.
    explicit HeadOutputData(const HeadOutputDataV2& other);
    HeadOutputData& operator=(const HeadOutputDataV2& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    HeadOutputData* clone() const override;

    char trackingState() const { return _tracking_state; }
    const std::vector<float>& headPosition() const { return _head_position; }
    // Euler angles (x, y, z) in radians, in the convention of utils::fromEulerAngles.
    const std::vector<float>& headRotation() const { return _head_rotation; }
    float headPositionConfidence() const { return _head_position_confidence; }
    char modelQualityLevel() const { return _model_quality_level; }
    // eye_id RIGHT_EYE or LEFT_EYE ("eye_id is either LEFT_EYE or RIGHT_EYE").
    const std::vector<float>& headEyeBallPos(int eye_id) const;

    void setTrackingState(char state) { _tracking_state = state; }
    void setHeadPosition(const std::vector<float>& position);  // "expected 3D vector"
    void setHeadRotation(const std::vector<float>& rotation);  // "3D vector expected"
    // 0..1 inclusive; NaN fails ("head_confidence not in the range 0..1").
    void setHeadPositionConfidence(float confidence);
    void setModelQualityLevel(char level) { _model_quality_level = level; }
    // "eye_id is neither LEFT_EYE nor RIGHT_EYE"; "eyeball_pos is expected to be a 3D point".
    void setHeadEyeballPos(int eye_id, const std::vector<float>& eyeball_pos);

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    char _tracking_state = 0;
    std::vector<float> _head_position;
    std::vector<float> _head_rotation;
    float _head_position_confidence = 0;
    char _model_quality_level = 0;
    std::vector<std::vector<float>> _head_eyeball_pos;
};

}  // namespace eod
}  // namespace tq

#endif
