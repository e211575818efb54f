#include <eod/timingoutputdata.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

TimingOutputData::~TimingOutputData() = default;

TimingOutputData* TimingOutputData::clone() const { return new TimingOutputData(*this); }

template <class Self, class V>
void TimingOutputData::visitFields(Self& self, V& v) {
    v(self._experiment_time);
    v(self._frame_time_secs);
    v(self._frame_time_msecs);
    v(self._approx_delay);
    v(self._annotation_label_id);
}

unsigned int TimingOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void TimingOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void TimingOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                              int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void TimingOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "EXPERIMENT_TIME" << "GMT_S" << "GMT_MS" << "DELAY" << "ANNOTATION_ID";
}

void TimingOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _experiment_time << _frame_time_secs << _frame_time_msecs
                        << _approx_delay << _annotation_label_id;
}

}  // namespace eod
}  // namespace tq
