#include <eod/irpodstateoutputdata.h>

#include <cassert>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

IRPodStateOutputData::~IRPodStateOutputData() = default;

IRPodStateOutputData* IRPodStateOutputData::clone() const {
    return new IRPodStateOutputData(*this);
}

void IRPodStateOutputData::setState(int state) {
    EOD_REQUIRE(state == 0 || state == 1, "invalid state");
    _state = state;
}

void IRPodStateOutputData::setPosition(const std::vector<float>& position) {
    EOD_REQUIRE(position.size() == ARRAY_SIZE_3D_DATA, "expected 3D position");
    _position = position;
}

template <class Self, class V>
void IRPodStateOutputData::visitFields(Self& self, V& v) {
    assert(self._position.size() == ARRAY_SIZE_3D_DATA);
    v(self._state);
    v(self._position);
}

unsigned int IRPodStateOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void IRPodStateOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void IRPodStateOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                  int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void IRPodStateOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "IR_STATE" << "IR_POS_X" << "IR_POS_y" << "IR_POS_X";
}

void IRPodStateOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _state << _position;
}

}  // namespace eod
}  // namespace tq
