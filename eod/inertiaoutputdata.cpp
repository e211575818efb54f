#include <eod/inertiaoutputdata.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

InertiaOutputData::~InertiaOutputData() = default;

InertiaOutputData* InertiaOutputData::clone() const { return new InertiaOutputData(*this); }

template <class Self, class V>
void InertiaOutputData::visitFields(Self& self, V& v) {
    v(self._angular_rate_x);
    v(self._angular_rate_y);
    v(self._angular_rate_z);
    v(self._accel_x);
    v(self._accel_y);
    v(self._accel_z);
}

unsigned int InertiaOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void InertiaOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void InertiaOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                               int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void InertiaOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "X_ANG_RATE" << "Y_ANG_RATE" << "Z_ANG_RATE" << "X_ACCEL" << "Y_ACCEL"
                        << "Z_ACCEL";
}

void InertiaOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _angular_rate_x << _angular_rate_y << _angular_rate_z << _accel_x
                        << _accel_y << _accel_z;
}

}  // namespace eod
}  // namespace tq
