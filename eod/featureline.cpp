#include <eod/featureline.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

const char* const SUFFIXES[] = {"_X1", "_Y1", "_X2", "_Y2"};

}  // namespace

FeatureLine::FeatureLine(char object_id, const std::string& name)
    : FeatureOutputData(object_id, name, SUFFIXES) {}

FeatureLine::~FeatureLine() = default;

FeatureLine* FeatureLine::clone() const { return new FeatureLine(*this); }

void FeatureLine::setEndPoints(float x1, float y1, float x2, float y2) {
    EOD_REQUIRE(isValidValue(x1), "x1 is not a valid value");
    EOD_REQUIRE(isValidValue(y1), "y1 is not a valid value");
    EOD_REQUIRE(isValidValue(x2), "x2 is not a valid value");
    EOD_REQUIRE(isValidValue(y2), "y2 is not a valid value");
    setValues({x1, y1, x2, y2});
}

}  // namespace eod
}  // namespace tq
