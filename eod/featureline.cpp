#include <eod/featureline.h>

#include "eod/fieldcodec.h"
#include "eod/textcolumns.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {

FeatureLine::FeatureLine(char object_id, const std::string& name)
    : FeatureOutputData(object_id, name) {}

FeatureLine::~FeatureLine() = default;

FeatureLine* FeatureLine::clone() const { return new FeatureLine(*this); }

void FeatureLine::setEndPoints(float x1, float y1, float x2, float y2) {
    EOD_REQUIRE(isValidValue(x1), "x1 is not a valid value");
    EOD_REQUIRE(isValidValue(y1), "y1 is not a valid value");
    EOD_REQUIRE(isValidValue(x2), "x2 is not a valid value");
    EOD_REQUIRE(isValidValue(y2), "y2 is not a valid value");
    _x1 = x1;
    _y1 = y1;
    _x2 = x2;
    _y2 = y2;
}

template <class Self, class V>
void FeatureLine::visitFields(Self& self, V& v) {
    v(self._x1);
    v(self._y1);
    v(self._x2);
    v(self._y2);
}

unsigned int FeatureLine::numDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void FeatureLine::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FeatureLine::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void FeatureLine::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << columnLabel("_X1") << columnLabel("_Y1") << columnLabel("_X2")
                        << columnLabel("_Y2");
}

void FeatureLine::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _x1 << _y1 << _x2 << _y2;
}

}  // namespace eod
}  // namespace tq
