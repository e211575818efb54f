#include <eod/enginestateoutputdata.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

int checkedState(int state) {
    EOD_REQUIRE(state >= EngineStateOutputData::MIN_STATE &&
                    state <= EngineStateOutputData::MAX_STATE,
                "unknown state");
    return state;
}

}  // namespace

EngineStateOutputData::EngineStateOutputData(int state) : _state(checkedState(state)) {}

EngineStateOutputData::~EngineStateOutputData() = default;

EngineStateOutputData* EngineStateOutputData::clone() const {
    return new EngineStateOutputData(*this);
}

void EngineStateOutputData::setState(int state) { _state = checkedState(state); }

boost::shared_ptr<HeadTrackerStateOutputData> EngineStateOutputData::headtrackerStateOutputData() {
    return typedSubObject<HeadTrackerStateOutputData>(HeadTrackerStateOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadTrackerStateOutputData const>
EngineStateOutputData::headtrackerStateOutputData() const {
    return typedSubObject<HeadTrackerStateOutputData>(HeadTrackerStateOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<IRPodStateOutputData> EngineStateOutputData::irPodStateOutputData() {
    return typedSubObject<IRPodStateOutputData>(IRPodStateOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<IRPodStateOutputData const> EngineStateOutputData::irPodStateOutputData() const {
    return typedSubObject<IRPodStateOutputData>(IRPodStateOutputData::THIS_OBJECT_ID);
}

template <class Self, class V>
void EngineStateOutputData::visitFields(Self& self, V& v) {
    v(self._state);
}

unsigned int EngineStateOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void EngineStateOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void EngineStateOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                   int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void EngineStateOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "ENGINE_STATE";
}

void EngineStateOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _state;
}

}  // namespace eod
}  // namespace tq
