#include <eod/featurerect.h>

#include "eod/fieldcodec.h"
#include "eod/textcolumns.h"

namespace tq {
namespace eod {

// Definitions for code that binds the constants to references.

FeatureRect::FeatureRect(char object_id) : FeatureOutputData(object_id, IDToName(object_id)) {}

FeatureRect::~FeatureRect() = default;

std::string FeatureRect::IDToName(char object_id) {
    switch (object_id) {
        case FACE_RECT_ID:
            return "FACERECT";
        case RIGHT_EYE_RECT_ID:
            return "REYERECT";
        case LEFT_EYE_RECT_ID:
            return "LEYERECT";
        case MOUTH_RECT_ID:
            return "MOUTRECT";
        default:
            return "RECT";
    }
}

FeatureRect* FeatureRect::clone() const { return new FeatureRect(*this); }

void FeatureRect::setRect(float x, float y, float width, float height) {
    _x = x;
    _y = y;
    _width = width;
    _height = height;
}

template <class Self, class V>
void FeatureRect::visitFields(Self& self, V& v) {
    v(self._x);
    v(self._y);
    v(self._width);
    v(self._height);
}

unsigned int FeatureRect::numDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void FeatureRect::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FeatureRect::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void FeatureRect::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << columnLabel("_X") << columnLabel("_Y") << columnLabel("_WIDTH")
                        << columnLabel("_HEIGHT");
}

void FeatureRect::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _x << _y << _width << _height;
}

}  // namespace eod
}  // namespace tq
