#include <eod/featurecircle.h>

#include "eod/fieldcodec.h"
#include "eod/textcolumns.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {

FeatureCircle::FeatureCircle(char object_id, const std::string& name)
    : FeatureOutputData(object_id, name) {}

FeatureCircle::~FeatureCircle() = default;

FeatureCircle* FeatureCircle::clone() const { return new FeatureCircle(*this); }

void FeatureCircle::setGeometry(float x, float y, float radius) {
    EOD_REQUIRE(isValidValue(x), "x not invalidValue() and outside the range 0..1");
    EOD_REQUIRE(isValidValue(y), "y not invalidValue() and outside the range 0..1");
    EOD_REQUIRE(isValidValue(radius), "radius not invalidValue() and outside the range 0..1");
    _x = x;
    _y = y;
    _radius = radius;
}

template <class Self, class V>
void FeatureCircle::visitFields(Self& self, V& v) {
    v(self._x);
    v(self._y);
    v(self._radius);
}

unsigned int FeatureCircle::numDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void FeatureCircle::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FeatureCircle::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void FeatureCircle::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << columnLabel("_X") << columnLabel("_Y") << columnLabel("_RADIUS");
}

void FeatureCircle::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _x << _y << _radius;
}

}  // namespace eod
}  // namespace tq
