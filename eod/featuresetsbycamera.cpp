#include <eod/featuresetsbycamera.h>

#include "eod/featurechildren.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {

// Definitions for code that binds the constants to references.

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

void FeatureSetsByCamera::readFromBuffer(const std::vector<unsigned char>& buffer,
                                         int& read_pos) {
    clearSubObjects();
    readOwnData(buffer, read_pos);
    detail::readFeatureChildren(*this, buffer, read_pos);
}

void FeatureSetsByCamera::readFromBufferWithStatus(const std::vector<unsigned char>& buffer,
                                                   int& read_pos, unsigned int& status) {
    try {
        clearSubObjects();
        readOwnData(buffer, read_pos);
    } catch (...) {
        status |= STATUS_UNDECODABLE;
        return;
    }
    detail::readFeatureChildrenWithStatus(*this, buffer, read_pos, status);
}

}  // namespace eod
}  // namespace tq
