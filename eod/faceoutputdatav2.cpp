#include <eod/faceoutputdatav2.h>

#include "eod/detail/facelandmarkmap.h"
#include "eod/detail/fieldcodec.h"
#include "eod/detail/replacesubobject.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

FaceOutputDataV2::~FaceOutputDataV2() = default;

FaceOutputDataV2* FaceOutputDataV2::clone() const { return new FaceOutputDataV2(*this); }

void FaceOutputDataV2::addLandmark(const FaceLandmark& landmark) {
    EOD_REQUIRE(!detail::isMaskLandmarkId(landmark.id), "invalid landmark");
    _landmarks[landmark.id] = landmark;
}

bool FaceOutputDataV2::hasAllLandmarks(const std::vector<int>& ids) const {
    return detail::hasAllLandmarks(_landmarks, ids);
}

bool FaceOutputDataV2::faceCoordinate(int id, FaceCoordinate& out) const {
    return detail::findCoordinate(_landmarks, id, out);
}

bool FaceOutputDataV2::faceTextureCoordinate(int id, FaceTextureCoordinate& out) const {
    return detail::findTextureCoordinate(_landmarks, id, out);
}

void FaceOutputDataV2::setFaceCoordinate(int id, const FaceCoordinate& coordinate) {
    EOD_REQUIRE(!detail::isMaskLandmarkId(id), "invalid landmark");
    FaceLandmark& landmark = _landmarks[id];
    landmark.id = id;
    landmark.coordinate = coordinate;
}

void FaceOutputDataV2::setWearingGlasses(WearingGlassesType wearing_glasses) {
    EOD_REQUIRE(wearing_glasses >= 0 && wearing_glasses <= 255,
                "wearing_glasses outside the range 0..255");
    _wearing_glasses = static_cast<unsigned char>(wearing_glasses);
}

boost::shared_ptr<FaceTextureOutputData> FaceOutputDataV2::faceTexture() {
    return typedSubObject<FaceTextureOutputData>(FaceTextureOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<FaceTextureOutputData const> FaceOutputDataV2::faceTexture() const {
    return typedSubObject<FaceTextureOutputData>(FaceTextureOutputData::THIS_OBJECT_ID);
}

void FaceOutputDataV2::addFaceTexture(const boost::shared_ptr<FaceTextureOutputData>& texture) {
    detail::replaceSubObject(*this, FaceTextureOutputData::THIS_OBJECT_ID, texture);
}

void FaceOutputDataV2::printOwnHeader(std::ostream& os) const { detail::printLandmarkHeader(os); }

void FaceOutputDataV2::printOwnData(std::ostream& os) const {
    detail::printLandmarkData(os, _landmarks);
}

// The fields after the landmarks, whose variable-length list is written by hand.
template <class Self, class V>
void FaceOutputDataV2::visitFields(Self& self, V& v) {
    v(self._face_count);
    v(self._wearing_glasses);
}

unsigned int FaceOutputDataV2::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return detail::numLandmarkBytes(_landmarks) + s.bytes;
}

void FaceOutputDataV2::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendLandmarks(buffer, _landmarks);
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void FaceOutputDataV2::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                              int& read_pos) {
    _landmarks.clear();
    _landmarks = detail::readLandmarks(buffer, read_pos, "FaceOutputDataV2");
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

}  // namespace eod
}  // namespace tq
