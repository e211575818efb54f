#include <eod/featurecircle.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

const char* const SUFFIXES[] = {"_X", "_Y", "_RADIUS"};

}  // namespace

FeatureCircle::FeatureCircle(char object_id, const std::string& name)
    : FeatureOutputData(object_id, name, SUFFIXES) {}

FeatureCircle::~FeatureCircle() = default;

FeatureCircle* FeatureCircle::clone() const { return new FeatureCircle(*this); }

void FeatureCircle::setGeometry(float x, float y, float radius) {
    EOD_REQUIRE(isValidValue(x), "x not invalidValue() and outside the range 0..1");
    EOD_REQUIRE(isValidValue(y), "y not invalidValue() and outside the range 0..1");
    EOD_REQUIRE(isValidValue(radius), "radius not invalidValue() and outside the range 0..1");
    setValues({x, y, radius});
}

}  // namespace eod
}  // namespace tq
