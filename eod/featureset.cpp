#include <eod/featureset.h>

#include <boost/pointer_cast.hpp>

#include <eod/featureoutputdata.h>

#include "eod/detail/featurechildren.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

FeatureSet::FeatureSet(char object_id) : _object_id(object_id) {}

FeatureSet& FeatureSet::operator=(const FeatureSet& other) {
    EngineOutputBase::operator=(other);
    return *this;
}

FeatureSet::~FeatureSet() = default;

FeatureSet* FeatureSet::clone() const { return new FeatureSet(*this); }

boost::shared_ptr<FeatureRect> FeatureSet::faceRect() {
    return typedSubObject<FeatureRect>(FeatureRect::FACE_RECT_ID);
}

boost::shared_ptr<FeatureRect const> FeatureSet::faceRect() const {
    return typedSubObject<FeatureRect>(FeatureRect::FACE_RECT_ID);
}

boost::shared_ptr<FeatureRect> FeatureSet::rightEyeRect() {
    return typedSubObject<FeatureRect>(FeatureRect::RIGHT_EYE_RECT_ID);
}

boost::shared_ptr<FeatureRect const> FeatureSet::rightEyeRect() const {
    return typedSubObject<FeatureRect>(FeatureRect::RIGHT_EYE_RECT_ID);
}

boost::shared_ptr<FeatureRect> FeatureSet::leftEyeRect() {
    return typedSubObject<FeatureRect>(FeatureRect::LEFT_EYE_RECT_ID);
}

boost::shared_ptr<FeatureRect const> FeatureSet::leftEyeRect() const {
    return typedSubObject<FeatureRect>(FeatureRect::LEFT_EYE_RECT_ID);
}

boost::shared_ptr<FeatureRect> FeatureSet::mouthRect() {
    return typedSubObject<FeatureRect>(FeatureRect::MOUTH_RECT_ID);
}

boost::shared_ptr<FeatureRect const> FeatureSet::mouthRect() const {
    return typedSubObject<FeatureRect>(FeatureRect::MOUTH_RECT_ID);
}

boost::shared_ptr<FeaturePoint> FeatureSet::rightPupilPos() {
    return typedSubObject<FeaturePoint>(FeaturePoint::RIGHT_PUPIL_ID);
}

boost::shared_ptr<FeaturePoint const> FeatureSet::rightPupilPos() const {
    return typedSubObject<FeaturePoint>(FeaturePoint::RIGHT_PUPIL_ID);
}

boost::shared_ptr<FeaturePoint> FeatureSet::leftPupilPos() {
    return typedSubObject<FeaturePoint>(FeaturePoint::LEFT_PUPIL_ID);
}

boost::shared_ptr<FeaturePoint const> FeatureSet::leftPupilPos() const {
    return typedSubObject<FeaturePoint>(FeaturePoint::LEFT_PUPIL_ID);
}

char FeatureSet::pupilIdForEye(int eye_id) {
    EOD_REQUIRE(eye_id == RIGHT_EYE || eye_id == LEFT_EYE, "eye_id neither LEFT_EYE nor RIGHT_EYE");
    return eye_id == RIGHT_EYE ? FeaturePoint::RIGHT_PUPIL_ID : FeaturePoint::LEFT_PUPIL_ID;
}

boost::shared_ptr<FeaturePoint> FeatureSet::pupilPosForEye(int eye_id) {
    return typedSubObject<FeaturePoint>(pupilIdForEye(eye_id));
}

boost::shared_ptr<FeaturePoint const> FeatureSet::pupilPosForEye(int eye_id) const {
    return typedSubObject<FeaturePoint>(pupilIdForEye(eye_id));
}

void FeatureSet::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "FEATURE_SET_ID";
}

void FeatureSet::printOwnData(std::ostream& os) const { detail::Columns(os) << _object_id; }

void FeatureSet::doAddSubObject(const boost::shared_ptr<Serializable>& object) {
    if (object) detail::requireRebuildable(*object, "FeatureSet::addSubObject");
    if (boost::dynamic_pointer_cast<FeatureOutputData>(object)) {
        insertSubObject(object);
    } else {
        EngineOutputBase::doAddSubObject(object);
    }
}

boost::shared_ptr<Serializable> FeatureSet::readSubObject(const std::vector<unsigned char>& buffer,
                                                          int& read_pos) {
    return detail::readFeatureChild(buffer, read_pos);
}

boost::shared_ptr<Serializable> FeatureSet::readSubObjectWithStatus(
    const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) {
    return detail::readFeatureChildWithStatus(buffer, read_pos, status);
}

}  // namespace eod
}  // namespace tq
