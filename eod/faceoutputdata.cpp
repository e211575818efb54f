#include <eod/faceoutputdata.h>

#include "eod/detail/facelandmarkmap.h"
#include "eod/detail/replacesubobject.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

FaceOutputData::~FaceOutputData() = default;

FaceOutputData* FaceOutputData::clone() const { return new FaceOutputData(*this); }

void FaceOutputData::addLandmark(const FaceLandmark& landmark) {
    EOD_REQUIRE(!detail::isMaskLandmarkId(landmark.id), "invalid landmark");
    _landmarks[landmark.id] = landmark;
}

bool FaceOutputData::hasAllLandmarks(const std::vector<int>& ids) const {
    return detail::hasAllLandmarks(_landmarks, ids);
}

bool FaceOutputData::faceCoordinate(int id, FaceCoordinate& out) const {
    return detail::findCoordinate(_landmarks, id, out);
}

bool FaceOutputData::faceTextureCoordinate(int id, FaceTextureCoordinate& out) const {
    return detail::findTextureCoordinate(_landmarks, id, out);
}

void FaceOutputData::setFaceCoordinate(int id, const FaceCoordinate& coordinate) {
    EOD_REQUIRE(!detail::isMaskLandmarkId(id), "invalid landmark");
    FaceLandmark& landmark = _landmarks[id];
    landmark.id = id;
    landmark.coordinate = coordinate;
}

void FaceOutputData::zeroLandmark(int id) {
    const auto it = _landmarks.find(id);
    if (it != _landmarks.end()) it->second.coordinate = FaceCoordinate();
}

boost::shared_ptr<FaceTextureOutputData> FaceOutputData::faceTexture() {
    return typedSubObject<FaceTextureOutputData>(FaceTextureOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<FaceTextureOutputData const> FaceOutputData::faceTexture() const {
    return typedSubObject<FaceTextureOutputData>(FaceTextureOutputData::THIS_OBJECT_ID);
}

void FaceOutputData::addFaceTexture(const boost::shared_ptr<FaceTextureOutputData>& texture) {
    detail::replaceSubObject(*this, FaceTextureOutputData::THIS_OBJECT_ID, texture);
}

void FaceOutputData::printOwnHeader(std::ostream& os) const { detail::printLandmarkHeader(os); }

void FaceOutputData::printOwnData(std::ostream& os) const {
    detail::printLandmarkData(os, _landmarks);
}

unsigned int FaceOutputData::numEngineSpecificDataBytes() const {
    return detail::numLandmarkBytes(_landmarks);
}

void FaceOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendLandmarks(buffer, _landmarks);
}

void FaceOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                            int& read_pos) {
    _landmarks.clear();
    _landmarks = detail::readLandmarks(buffer, read_pos, "FaceOutputData");
}

}  // namespace eod
}  // namespace tq
