#include <eod/pupiloutputdata.h>

#include <cassert>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

PupilOutputData::PupilOutputData()
    : _pupil_position(ARRAY_SIZE_PAIR_DATA, std::vector<float>(ARRAY_SIZE_3D_DATA)),
      _pupil_diameter(ARRAY_SIZE_PAIR_DATA) {}

PupilOutputData::~PupilOutputData() = default;

void PupilOutputData::copyFrom(const PupilOutputData& other) { *this = other; }

PupilOutputData* PupilOutputData::clone() const { return new PupilOutputData(*this); }

const std::vector<float>& PupilOutputData::pupilPosition(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _pupil_position[eye_id];
}

float PupilOutputData::pupilDiameter(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _pupil_diameter[eye_id];
}

void PupilOutputData::setPupilPosition(int eye_id, const std::vector<float>& position) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(position.size() == ARRAY_SIZE_3D_DATA, "pupil_position 3D point expected");
    _pupil_position[eye_id] = position;
}

void PupilOutputData::setPupilDiameter(int eye_id, float diameter) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(double(diameter) >= 0.0, "pupil_diameter less than zero");
    _pupil_diameter[eye_id] = diameter;
}

void PupilOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "PUPIL_R_X" << "PUPIL_R_Y" << "PUPIL_R_Z" << "PUPIL_R_DIAM"
                        << "PUPIL_L_X" << "PUPIL_L_Y" << "PUPIL_L_Z" << "PUPIL_L_DIAM";
}

void PupilOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _pupil_position[RIGHT_EYE] << _pupil_diameter[RIGHT_EYE]
                        << _pupil_position[LEFT_EYE] << _pupil_diameter[LEFT_EYE];
}

template <class Self, class V>
void PupilOutputData::visitFields(Self& self, V& v) {
    assert(self._pupil_position.size() == ARRAY_SIZE_PAIR_DATA);
    assert(self._pupil_diameter.size() == ARRAY_SIZE_PAIR_DATA);
    v(self._pupil_position[RIGHT_EYE]);
    v(self._pupil_diameter[RIGHT_EYE]);
    v(self._pupil_position[LEFT_EYE]);
    v(self._pupil_diameter[LEFT_EYE]);
}

unsigned int PupilOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void PupilOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void PupilOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                             int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

}  // namespace eod
}  // namespace tq
