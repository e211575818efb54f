#include <eod/headoutputdatav2.h>

#include <cassert>

#include <eod/utils/geomutils.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

HeadOutputDataV2::HeadOutputDataV2()
    : _head_position(ARRAY_SIZE_3D_DATA),
      _head_rotation_quaternion{1.0, 0.0, 0.0, 0.0},
      _head_rotation(ARRAY_SIZE_3D_DATA),
      _head_eyeball_pos(ARRAY_SIZE_PAIR_DATA, std::vector<double>(ARRAY_SIZE_3D_DATA)) {}

HeadOutputDataV2::~HeadOutputDataV2() = default;

void HeadOutputDataV2::copyFrom(const HeadOutputDataV2& other) { *this = other; }

HeadOutputDataV2* HeadOutputDataV2::clone() const { return new HeadOutputDataV2(*this); }

std::vector<double> HeadOutputDataV2::headEyeBallPos(EyeId eye_id) const {
    EOD_REQUIRE(eye_id == RIGHT_EYE || eye_id == LEFT_EYE,
                "eye_id is neither LEFT_EYE nor RIGHT_EYE");
    return _head_eyeball_pos[eye_id];
}

void HeadOutputDataV2::setHeadPosition(const std::vector<double>& position) {
    EOD_REQUIRE(position.size() == ARRAY_SIZE_3D_DATA, "pos expected to be 3D point");
    _head_position = position;
}

void HeadOutputDataV2::setHeadRotation(const std::vector<double>& euler_angles) {
    EOD_REQUIRE(euler_angles.size() == ARRAY_SIZE_3D_DATA,
                "rotation expected to be 3D euler angle");
    std::vector<double> quaternion = utils::fromEulerAngles(euler_angles);
    _head_rotation = euler_angles;
    _head_rotation_quaternion.swap(quaternion);
}

void HeadOutputDataV2::setHeadRotationQuaternion(const std::vector<double>& quaternion) {
    EOD_REQUIRE(quaternion.size() == ARRAY_SIZE_4D_DATA,
                "rotation expected to be quaternion for 3D space (i.e. 4 dimensions)");
    std::vector<double> euler_angles = utils::toEulerAngles(quaternion);
    _head_rotation_quaternion = quaternion;
    _head_rotation.swap(euler_angles);
}

void HeadOutputDataV2::setHeadPositionConfidence(double confidence) {
    EOD_REQUIRE(detail::inUnitRange(confidence), "head_confidencec outside the range 0..1");
    _head_position_confidence = confidence;
}

void HeadOutputDataV2::setHeadEyeballPos(EyeId eye_id, const std::vector<double>& eyeball_pos) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(eyeball_pos.size() == ARRAY_SIZE_3D_DATA, "eyeball_pos expected to be 3D point");
    _head_eyeball_pos[eye_id] = eyeball_pos;
}

void HeadOutputDataV2::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "TRACK_STATE" << "HPOS_FILT_X" << "HPOS_FILT_Y" << "HPOS_FILT_Z"
                        << "HROT_FILT_Q0" << "HROT_FILT_Q1" << "HROT_FILT_Q2" << "HROT_FILT_Q3"
                        << "HPOS_CONF" << "MODEL_QUAL" << "H_EYEBALL_R_X" << "H_EYEBALL_R_Y"
                        << "H_EYEBALL_R_Z" << "H_EYEBALL_L_X" << "H_EYEBALL_L_Y"
                        << "H_EYEBALL_L_Z";
}

void HeadOutputDataV2::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _tracking_state << _head_position << _head_rotation_quaternion
                        << _head_position_confidence << _model_quality_level
                        << _head_eyeball_pos[RIGHT_EYE] << _head_eyeball_pos[LEFT_EYE];
}

// The Euler angles are not listed: they never travel, the reader derives them.
template <class Self, class V>
void HeadOutputDataV2::visitFields(Self& self, V& v) {
    assert(self._head_position.size() == ARRAY_SIZE_3D_DATA);
    assert(self._head_rotation_quaternion.size() == ARRAY_SIZE_4D_DATA);
    assert(self._head_eyeball_pos.size() == ARRAY_SIZE_PAIR_DATA);
    v(self._tracking_state);
    v(self._head_position);
    v(self._head_rotation_quaternion);
    v(self._head_position_confidence);
    v(self._model_quality_level);
    v(self._head_eyeball_pos[RIGHT_EYE]);
    v(self._head_eyeball_pos[LEFT_EYE]);
}

unsigned int HeadOutputDataV2::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void HeadOutputDataV2::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void HeadOutputDataV2::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                              int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    try {
        visitFields(*this, r);
    } catch (...) {
        // Truncated data may stop right after the quaternion: keep the angles in step with it.
        _head_rotation = utils::toEulerAngles(_head_rotation_quaternion);
        throw;
    }
    _head_rotation = utils::toEulerAngles(_head_rotation_quaternion);
}

}  // namespace eod
}  // namespace tq
