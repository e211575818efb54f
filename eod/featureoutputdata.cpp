#include <eod/featureoutputdata.h>

#include <cassert>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

FeatureOutputData::FeatureOutputData(char object_id, const std::string& name)
    : _object_id(object_id), _name(name) {}

FeatureOutputData::FeatureOutputData(char object_id, const std::string& name,
                                     const char* const* suffixes, std::size_t count)
    : _object_id(object_id), _name(name), _suffixes(suffixes), _values(count, invalidValue()) {}

FeatureOutputData& FeatureOutputData::operator=(const FeatureOutputData& other) {
    Serializable::operator=(other);
    if (_suffixes == other._suffixes) _values = other._values;
    return *this;
}

FeatureOutputData::~FeatureOutputData() = default;

bool FeatureOutputData::isValidValue(float value) {
    // NaN fails both tests and is refused.
    return value == invalidValue() || (value >= 0.0f && value <= 1.0f);
}

void FeatureOutputData::setValues(std::initializer_list<float> values) {
    assert(values.size() == _values.size());
    _values.assign(values);
}

// The values vector keeps its size, so the field codec writes and reads exactly its floats.
template <class Self, class V>
void FeatureOutputData::visitFields(Self& self, V& v) {
    v(self._values);
}

unsigned int FeatureOutputData::numDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void FeatureOutputData::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FeatureOutputData::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void FeatureOutputData::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns columns(os);
    for (std::size_t i = 0; i < _values.size(); ++i) columns << _name + _suffixes[i];
}

void FeatureOutputData::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _values;
}

}  // namespace eod
}  // namespace tq
