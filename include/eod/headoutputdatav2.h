#ifndef EOD_HEADOUTPUTDATAV2_H
#define EOD_HEADOUTPUTDATAV2_H

// Current-generation head pose, double precision. Engine-specific data, 114 bytes: tracking
// state (bool), head position x, y, z, rotation quaternion q0..q3 (q0 the scalar part),
// position confidence (doubles), model quality level (char), right then left eyeball centre
// x, y, z (doubles).
//
// The rotation is held twice, as the quaternion and as Euler angles (x, y, z) in the
// convention of utils::fromEulerAngles, and the two always describe the same rotation: each
// rotation setter derives the other form, and reading derives the Euler angles from the
// quaternion, the only form on the wire. So after a round trip headRotation() is
// toEulerAngles(quaternion), which may differ from the angles first set (at gimbal lock, or
// outside the angle ranges that toEulerAngles returns). The quaternion is stored as given,
// not normalised.
//
// Setters check and then store, so a failed setter (std::invalid_argument) leaves the record
// unchanged.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class HeadOutputData;

class HeadOutputDataV2 : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 16;
    static constexpr char HEAD_OUTPUT_DATA_V2_ID = 16;

    HeadOutputDataV2();
    HeadOutputDataV2(const HeadOutputDataV2&) = default;
    HeadOutputDataV2& operator=(const HeadOutputDataV2&) = default;
    ~HeadOutputDataV2() override;
    void copyFrom(const HeadOutputDataV2& other);
    // From the first generation (docs/versioning.md): tracking when the state is not 0, the
    // Euler angles kept and the quaternion derived from them.
    explicit HeadOutputDataV2(const HeadOutputData& other);
    HeadOutputDataV2& operator=(const HeadOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    HeadOutputDataV2* clone() const override;

    bool isTracking() const { return _tracking_state; }
    const std::vector<double>& headPosition() const { return _head_position; }
    const std::vector<double>& headRotation() const { return _head_rotation; }
    const std::vector<double>& headRotationQuaternion() const { return _head_rotation_quaternion; }
    double headPositionConfidence() const { return _head_position_confidence; }
    char modelQualityLevel() const { return _model_quality_level; }
    // A copy; eye_id RIGHT_EYE or LEFT_EYE ("eye_id is neither LEFT_EYE nor RIGHT_EYE").
    std::vector<double> headEyeBallPos(EyeId eye_id) const;

    void setTrackingState(bool tracking) { _tracking_state = tracking; }
    void setHeadPosition(const std::vector<double>& position);  // "pos expected to be 3D point"
    // Euler angles; also sets the quaternion ("rotation expected to be 3D euler angle").
    void setHeadRotation(const std::vector<double>& euler_angles);
    // Also sets the Euler angles ("rotation expected to be quaternion for 3D space (i.e. 4
    // dimensions)").
    void setHeadRotationQuaternion(const std::vector<double>& quaternion);
    // 0..1 inclusive; NaN fails ("head_confidencec outside the range 0..1").
    void setHeadPositionConfidence(double confidence);
    void setModelQualityLevel(char level) { _model_quality_level = level; }
    // "eye_id neither LEFT_EYE nor RIGHT_EYE"; "eyeball_pos expected to be 3D point".
    void setHeadEyeballPos(EyeId eye_id, const std::vector<double>& eyeball_pos);

    // The quaternion is printed, the Euler angles are not.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    bool _tracking_state = false;
    std::vector<double> _head_position;
    std::vector<double> _head_rotation_quaternion;
    std::vector<double> _head_rotation;
    double _head_position_confidence = 0;
    char _model_quality_level = 0;
    std::vector<std::vector<double>> _head_eyeball_pos;
};

}  // namespace eod
}  // namespace tq

#endif
