#include <eod/featurepoint.h>

#include "eod/fieldcodec.h"
#include "eod/textcolumns.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {

// Definitions for code that binds the constants to references.

FeaturePoint::FeaturePoint(char object_id) : FeatureOutputData(object_id, IDToName(object_id)) {}

FeaturePoint::~FeaturePoint() = default;

std::string FeaturePoint::IDToName(char object_id) {
    switch (object_id) {
        case RIGHT_PUPIL_ID:
            return "R_PUPILPOS";
        case LEFT_PUPIL_ID:
            return "L_PUPILPOS";
        default:
            return "POINT";
    }
}

FeaturePoint* FeaturePoint::clone() const { return new FeaturePoint(*this); }

void FeaturePoint::setPosition(float x, float y) {
    EOD_REQUIRE(isValidValue(x), "x is not a valid value");
    EOD_REQUIRE(isValidValue(y), "y is not a valid value");
    _x = x;
    _y = y;
}

template <class Self, class V>
void FeaturePoint::visitFields(Self& self, V& v) {
    v(self._x);
    v(self._y);
}

unsigned int FeaturePoint::numDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void FeaturePoint::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FeaturePoint::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void FeaturePoint::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << columnLabel("_X") << columnLabel("_Y");
}

void FeaturePoint::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _x << _y;
}

}  // namespace eod
}  // namespace tq
