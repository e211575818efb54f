#include <eod/featurerect.h>

namespace tq {
namespace eod {

namespace {

const char* const SUFFIXES[] = {"_X", "_Y", "_WIDTH", "_HEIGHT"};

}  // namespace

FeatureRect::FeatureRect(char object_id)
    : FeatureOutputData(object_id, IDToName(object_id), SUFFIXES) {}

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
    setValues({x, y, width, height});
}

}  // namespace eod
}  // namespace tq
