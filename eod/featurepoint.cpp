#include <eod/featurepoint.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

const char* const SUFFIXES[] = {"_X", "_Y"};

}  // namespace

FeaturePoint::FeaturePoint(char object_id)
    : FeatureOutputData(object_id, IDToName(object_id), SUFFIXES) {}

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
    setValues({x, y});
}

}  // namespace eod
}  // namespace tq
