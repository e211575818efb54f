#include <eod/headtrackerstateoutputdata.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

int checkedState(int state) {
    EOD_REQUIRE(state >= HeadTrackerStateOutputData::MIN_STATE &&
                    state <= HeadTrackerStateOutputData::MAX_STATE,
                "state invalid");
    return state;
}

}  // namespace

HeadTrackerStateOutputData::HeadTrackerStateOutputData(int state) : _state(checkedState(state)) {}

HeadTrackerStateOutputData::~HeadTrackerStateOutputData() = default;

HeadTrackerStateOutputData* HeadTrackerStateOutputData::clone() const {
    return new HeadTrackerStateOutputData(*this);
}

void HeadTrackerStateOutputData::setState(int state) { _state = checkedState(state); }

template <class Self, class V>
void HeadTrackerStateOutputData::visitFields(Self& self, V& v) {
    v(self._state);
}

unsigned int HeadTrackerStateOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void HeadTrackerStateOutputData::appendEngineSpecificData(
    std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void HeadTrackerStateOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                        int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void HeadTrackerStateOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "HT_STATE";
}

void HeadTrackerStateOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _state;
}

}  // namespace eod
}  // namespace tq
