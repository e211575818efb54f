#include <eod/featureoutputdata.h>

namespace tq {
namespace eod {

FeatureOutputData::FeatureOutputData(char object_id, const std::string& name)
    : _object_id(object_id), _name(name) {}

FeatureOutputData& FeatureOutputData::operator=(const FeatureOutputData& other) {
    Serializable::operator=(other);
    return *this;
}

FeatureOutputData::~FeatureOutputData() = default;

bool FeatureOutputData::isValidValue(float value) {
    // NaN fails both tests and is refused.
    return value == invalidValue() || (value >= 0.0f && value <= 1.0f);
}

}  // namespace eod
}  // namespace tq
