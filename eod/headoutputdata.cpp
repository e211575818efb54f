#include <eod/headoutputdata.h>

#include <cassert>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

HeadOutputData::HeadOutputData()
    : _head_position(ARRAY_SIZE_3D_DATA),
      _head_rotation(ARRAY_SIZE_3D_DATA),
      _head_eyeball_pos(ARRAY_SIZE_PAIR_DATA, std::vector<float>(ARRAY_SIZE_3D_DATA)) {}

HeadOutputData::~HeadOutputData() = default;

void HeadOutputData::copyFrom(const HeadOutputData& other) { *this = other; }

HeadOutputData* HeadOutputData::clone() const { return new HeadOutputData(*this); }

const std::vector<float>& HeadOutputData::headEyeBallPos(int eye_id) const {
    EOD_REQUIRE(eye_id == RIGHT_EYE || eye_id == LEFT_EYE,
                "eye_id is either LEFT_EYE or RIGHT_EYE");
    return _head_eyeball_pos[eye_id];
}

void HeadOutputData::setHeadPosition(const std::vector<float>& position) {
    EOD_REQUIRE(position.size() == ARRAY_SIZE_3D_DATA, "expected 3D vector");
    _head_position = position;
}

void HeadOutputData::setHeadRotation(const std::vector<float>& rotation) {
    EOD_REQUIRE(rotation.size() == ARRAY_SIZE_3D_DATA, "3D vector expected");
    _head_rotation = rotation;
}

void HeadOutputData::setHeadPositionConfidence(float confidence) {
    EOD_REQUIRE(detail::inUnitRange(confidence), "head_confidence not in the range 0..1");
    _head_position_confidence = confidence;
}

void HeadOutputData::setHeadEyeballPos(int eye_id, const std::vector<float>& eyeball_pos) {
    EOD_REQUIRE(eye_id == RIGHT_EYE || eye_id == LEFT_EYE,
                "eye_id is neither LEFT_EYE nor RIGHT_EYE");
    EOD_REQUIRE(eyeball_pos.size() == ARRAY_SIZE_3D_DATA,
                "eyeball_pos is expected to be a 3D point");
    _head_eyeball_pos[eye_id] = eyeball_pos;
}

void HeadOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "TRACK_STATE" << "HPOS_FILT_X" << "HPOS_FILT_Y" << "HPOS_FILT_Z"
                        << "HROT_FILT_X" << "HROT_FILT_Y" << "HROT_FILT_Z" << "HPOS_CONF"
                        << "MODEL_QUAL" << "H_EYEBALL_R_X" << "H_EYEBALL_R_Y" << "H_EYEBALL_R_Z"
                        << "H_EYEBALL_L_X" << "H_EYEBALL_L_Y" << "H_EYEBALL_L_Z";
}

void HeadOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _tracking_state << _head_position << _head_rotation
                        << _head_position_confidence << _model_quality_level
                        << _head_eyeball_pos[RIGHT_EYE] << _head_eyeball_pos[LEFT_EYE];
}

template <class Self, class V>
void HeadOutputData::visitFields(Self& self, V& v) {
    assert(self._head_position.size() == ARRAY_SIZE_3D_DATA);
    assert(self._head_rotation.size() == ARRAY_SIZE_3D_DATA);
    assert(self._head_eyeball_pos.size() == ARRAY_SIZE_PAIR_DATA);
    v(self._tracking_state);
    v(self._head_position);
    v(self._head_rotation);
    v(self._head_position_confidence);
    v(self._model_quality_level);
    v(self._head_eyeball_pos[RIGHT_EYE]);
    v(self._head_eyeball_pos[LEFT_EYE]);
}

unsigned int HeadOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void HeadOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void HeadOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                            int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

}  // namespace eod
}  // namespace tq
