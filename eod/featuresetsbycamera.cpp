#include <eod/featuresetsbycamera.h>

#include "eod/detail/featurechildren.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

FeatureSetsByCamera::~FeatureSetsByCamera() = default;

FeatureSetsByCamera* FeatureSetsByCamera::clone() const { return new FeatureSetsByCamera(*this); }

char FeatureSetsByCamera::setIdForCamera(int camera) {
    switch (camera) {
        case 0:
            return FeatureSet::FEATURE_SET_CAM_A_ID;
        case 1:
            return FeatureSet::FEATURE_SET_CAM_B_ID;
        default:
            EOD_USAGE_ERROR("invalid camera id");
    }
}

boost::shared_ptr<FeatureSet> FeatureSetsByCamera::featureSetForCamera(int camera) {
    return typedSubObject<FeatureSet>(setIdForCamera(camera));
}

boost::shared_ptr<FeatureSet const> FeatureSetsByCamera::featureSetForCamera(int camera) const {
    return typedSubObject<FeatureSet>(setIdForCamera(camera));
}

// The sets print their own columns, each headed by its id.
void FeatureSetsByCamera::printOwnHeader(std::ostream&) const {}

void FeatureSetsByCamera::printOwnData(std::ostream&) const {}

void FeatureSetsByCamera::doAddSubObject(const boost::shared_ptr<Serializable>& object) {
    if (object) detail::requireRebuildable(*object, "FeatureSetsByCamera::addSubObject");
    EngineOutputBase::doAddSubObject(object);
}

boost::shared_ptr<Serializable> FeatureSetsByCamera::readSubObject(
    const std::vector<unsigned char>& buffer, int& read_pos) {
    return detail::readFeatureChild(buffer, read_pos);
}

boost::shared_ptr<Serializable> FeatureSetsByCamera::readSubObjectWithStatus(
    const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) {
    return detail::readFeatureChildWithStatus(buffer, read_pos, status);
}

}  // namespace eod
}  // namespace tq
