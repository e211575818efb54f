#include <eod/facetextureoutputdata.h>

#include <boost/pointer_cast.hpp>

#include <eod/serializableerror.h>

#include "eod/detail/facelandmarkmap.h"
#include "eod/detail/fieldcodec.h"
#include "eod/detail/replacesubobject.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

FaceTextureOutputData::~FaceTextureOutputData() = default;

FaceTextureOutputData* FaceTextureOutputData::clone() const {
    return new FaceTextureOutputData(*this);
}

void FaceTextureOutputData::addFaceTexture(FaceTextureType type,
                                           const boost::shared_ptr<ImageOutputData>& image) {
    EOD_REQUIRE(type != INVALID_FACE_TEXTURE_TYPE, "invalid type, face_texure values");
    detail::replaceSubObject(*this, ImageOutputData::THIS_OBJECT_ID, image);
    _type = type;
}

boost::shared_ptr<ImageOutputData> FaceTextureOutputData::faceTexture() {
    return typedSubObject<ImageOutputData>(ImageOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<ImageOutputData const> FaceTextureOutputData::faceTexture() const {
    return typedSubObject<ImageOutputData>(ImageOutputData::THIS_OBJECT_ID);
}

void FaceTextureOutputData::setPixelTransform(float a, float b, float c, float d) {
    _pixel_transform = {a, b, c, d};
}

void FaceTextureOutputData::addMaskLandmark(const FaceLandmark& landmark) {
    EOD_REQUIRE(detail::isMaskLandmarkId(landmark.id), "landmark.id outside the range 800..899");
    _mask_landmarks[landmark.id] = landmark;
}

bool FaceTextureOutputData::faceMaskCoordinate(int id, FaceCoordinate& out) const {
    return detail::findCoordinate(_mask_landmarks, id, out);
}

bool FaceTextureOutputData::faceMaskTextureCoordinate(int id, FaceTextureCoordinate& out) const {
    return detail::findTextureCoordinate(_mask_landmarks, id, out);
}

void FaceTextureOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "FACE_TEXTURE_TYPE" << "PIXEL_TRANSFORM_0" << "PIXEL_TRANSFORM_1"
                        << "PIXEL_TRANSFORM_2" << "PIXEL_TRANSFORM_3" << "NUM_MASK_LANDMARKS";
}

void FaceTextureOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _type << _pixel_transform << _mask_landmarks.size();
}

void FaceTextureOutputData::doAddSubObject(const boost::shared_ptr<Serializable>& object) {
    if (object && !boost::dynamic_pointer_cast<ImageOutputData>(object)) {
        throw SerializableError(
            "FaceTextureOutputData::doAddSubObject - object not derived from ImageOutputData");
    }
    insertSubObject(object);
}

template <class Self, class V>
void FaceTextureOutputData::visitFields(Self& self, V& v) {
    v(self._type);
    v(self._pixel_transform);
}

unsigned int FaceTextureOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes + detail::numLandmarkBytes(_mask_landmarks);
}

void FaceTextureOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
    detail::appendLandmarks(buffer, _mask_landmarks);
}

void FaceTextureOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                   int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
    _mask_landmarks.clear();
    _mask_landmarks = detail::readLandmarks(buffer, read_pos, "FaceTextureOutputData");
}

}  // namespace eod
}  // namespace tq
