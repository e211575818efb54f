#include <eod/customeventoutputdata.h>

#include <string>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

namespace {

// The mask of one flag; 0 for a bit number outside the word, where a shift would be
// undefined.
unsigned int bitMask(int bit) {
    return bit >= 0 && bit < CustomEventOutputData::NUM_FLAGS ? 1u << bit : 0u;
}

}  // namespace

CustomEventOutputData::~CustomEventOutputData() = default;

CustomEventOutputData* CustomEventOutputData::clone() const {
    return new CustomEventOutputData(*this);
}

void CustomEventOutputData::setFlags(unsigned int values, unsigned int keep_mask) {
    _flags = (_flags & keep_mask) | values;
}

void CustomEventOutputData::setFlag(int bit, bool on) {
    const unsigned int mask = bitMask(bit);
    setFlags(on ? mask : 0u, ~mask);
}

bool CustomEventOutputData::isSet(int bit) const { return (_flags & bitMask(bit)) != 0; }

template <class Self, class V>
void CustomEventOutputData::visitFields(Self& self, V& v) {
    v(self._flags);
}

unsigned int CustomEventOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void CustomEventOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void CustomEventOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                   int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void CustomEventOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns columns(os);
    for (int bit = 0; bit < NUM_FLAGS; ++bit) columns << "BIT" + std::to_string(bit);
}

void CustomEventOutputData::printOwnData(std::ostream& os) const {
    detail::Columns columns(os);
    for (int bit = 0; bit < NUM_FLAGS; ++bit) columns << isSet(bit);
}

}  // namespace eod
}  // namespace tq
