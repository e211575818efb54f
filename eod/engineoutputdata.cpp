#include <eod/engineoutputdata.h>

#include <boost/pointer_cast.hpp>

#include <eod/enginestateoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headoutputdatav2.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/inertiaoutputdata.h>
#include <eod/timingoutputdata.h>
#include <eod/upgrade.h>
#include <eod/worldoutputdatav2.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {


EngineOutputData::~EngineOutputData() = default;

EngineOutputData* EngineOutputData::clone() const { return new EngineOutputData(*this); }

void EngineOutputData::reset() {
    clearSubObjects();
    _frame_num = 0;
    setSerializeEnabled(true);
}

const std::wstring& EngineOutputData::LOGFILE_EXTENSION() {
    static const std::wstring extension = L".tql";
    return extension;
}

const std::wstring& EngineOutputData::LOGFILE_INDEX_EXTENSION() {
    static const std::wstring extension = L".itql";
    return extension;
}

void EngineOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "FRAME_NUM";
}

void EngineOutputData::printOwnData(std::ostream& os) const { detail::Columns(os) << _frame_num; }

void EngineOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, _frame_num);
}

void EngineOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                              int& read_pos) {
    _frame_num = detail::readNumber<unsigned int>(buffer, read_pos);
}

template <class T>
boost::shared_ptr<T> EngineOutputData::faceSetRecord(char id) const {
    const boost::shared_ptr<FaceSetOutputData const> first =
        typedSubObject<FaceSetOutputData>(FaceSetOutputData::THIS_OBJECT_ID);
    boost::shared_ptr<T const> record;
    if (first) record = first->typedSubObject<T>(id);
    if (!record) record = typedSubObject<T>(id);
    // Constness follows the frame: the non-const accessors hand out what they own.
    return boost::const_pointer_cast<T>(record);
}

#define EOD_FRAME_ACCESSOR(Type, name)                                   \
    boost::shared_ptr<Type> EngineOutputData::name() {                   \
        return typedSubObject<Type>(Type::THIS_OBJECT_ID);               \
    }                                                                    \
    boost::shared_ptr<Type const> EngineOutputData::name() const {       \
        return typedSubObject<Type>(Type::THIS_OBJECT_ID);               \
    }

EOD_FRAME_ACCESSOR(TimingOutputData, timingOutputData)
EOD_FRAME_ACCESSOR(EngineStateOutputData, engineStateOutputData)
EOD_FRAME_ACCESSOR(WorldOutputDataV2, worldOutputData)
EOD_FRAME_ACCESSOR(FeatureSetsByCamera, featureSetsByCamera)
EOD_FRAME_ACCESSOR(ImageCollectionOutputData, imagesOutputData)
EOD_FRAME_ACCESSOR(InertiaOutputData, inertiaOutputData)
EOD_FRAME_ACCESSOR(GPSOutputData, gpsOutputData)
EOD_FRAME_ACCESSOR(GPSOutputDataV2, gpsOutputDataV2)

#undef EOD_FRAME_ACCESSOR

#define EOD_FACE_SET_ACCESSOR(Type, name)                                \
    boost::shared_ptr<Type> EngineOutputData::name() {                   \
        return faceSetRecord<Type>(Type::THIS_OBJECT_ID);                \
    }                                                                    \
    boost::shared_ptr<Type const> EngineOutputData::name() const {       \
        return faceSetRecord<Type>(Type::THIS_OBJECT_ID);                \
    }

EOD_FACE_SET_ACCESSOR(HeadOutputDataV2, headOutputData)
EOD_FACE_SET_ACCESSOR(FaceOutputDataV2, faceOutputData)
EOD_FACE_SET_ACCESSOR(EyeOutputData, eyeOutputData)

#undef EOD_FACE_SET_ACCESSOR

boost::shared_ptr<FaceSetOutputData> EngineOutputData::face(unsigned char index) {
    return typedSubObjectAtIndex<FaceSetOutputData>(FaceSetOutputData::THIS_OBJECT_ID, index);
}

boost::shared_ptr<FaceSetOutputData const> EngineOutputData::face(unsigned char index) const {
    return typedSubObjectAtIndex<FaceSetOutputData>(FaceSetOutputData::THIS_OBJECT_ID, index);
}

unsigned char EngineOutputData::numFaces() const {
    return numSubObjects(FaceSetOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<TimingOutputData> timingOutputData(EngineOutputData& frame) {
    return frame.timingOutputData();
}

boost::shared_ptr<EngineStateOutputData> engineStateOutputData(EngineOutputData& frame) {
    return frame.engineStateOutputData();
}

boost::shared_ptr<WorldOutputDataV2> worldOutputData(EngineOutputData& frame) {
    return frame.worldOutputData();
}

boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera(EngineOutputData& frame) {
    return frame.featureSetsByCamera();
}

boost::shared_ptr<ImageCollectionOutputData> imageCollectionOutputData(EngineOutputData& frame) {
    return frame.imagesOutputData();
}

boost::shared_ptr<InertiaOutputData> inertiaOutputData(EngineOutputData& frame) {
    return frame.inertiaOutputData();
}

boost::shared_ptr<HeadOutputDataV2> headOutputData(EngineOutputData& frame) {
    return frame.headOutputData();
}

boost::shared_ptr<FaceOutputDataV2> faceOutputData(EngineOutputData& frame) {
    return frame.faceOutputData();
}

boost::shared_ptr<EyeOutputData> eyeOutputData(EngineOutputData& frame) {
    return frame.eyeOutputData();
}

boost::shared_ptr<FaceSetOutputData> faceSetOutputData(EngineOutputData& frame,
                                                       unsigned char index) {
    return frame.face(index);
}

unsigned char numFaceSetOutputDataObjects(EngineOutputData& frame) { return frame.numFaces(); }

boost::shared_ptr<TimingOutputData> addTimingOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<TimingOutputData>();
}

boost::shared_ptr<EngineStateOutputData> addEngineStateOutputDataIfMissing(
    EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<EngineStateOutputData>();
}

boost::shared_ptr<WorldOutputDataV2> addWorldOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<WorldOutputDataV2>();
}

boost::shared_ptr<FeatureSetsByCamera> addFeatureSetsByCameraIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<FeatureSetsByCamera>();
}

boost::shared_ptr<ImageCollectionOutputData> addImageCollectionOutputDataIfMissing(
    EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<ImageCollectionOutputData>();
}

boost::shared_ptr<InertiaOutputData> addInertiaOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<InertiaOutputData>();
}

boost::shared_ptr<FaceSetOutputData> addFaceSetOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<FaceSetOutputData>();
}

namespace {

// The face-set layout first, by the upgrade's own steps, so that an older record is moved or
// converted rather than shadowed by a new default one.
template <class T>
boost::shared_ptr<T> addToFaceSetIfMissing(EngineOutputData& frame) {
    addFaceSetOutputDataIfMissing(frame);
    return upgradeFaceSetOutputData(frame)->typedSubObjectAddIfMissing<T>();
}

}  // namespace

boost::shared_ptr<HeadOutputDataV2> addHeadOutputDataIfMissing(EngineOutputData& frame) {
    return addToFaceSetIfMissing<HeadOutputDataV2>(frame);
}

boost::shared_ptr<FaceOutputDataV2> addFaceOutputDataIfMissing(EngineOutputData& frame) {
    return addToFaceSetIfMissing<FaceOutputDataV2>(frame);
}

boost::shared_ptr<EyeOutputData> addEyeOutputDataIfMissing(EngineOutputData& frame) {
    return addToFaceSetIfMissing<EyeOutputData>(frame);
}

}  // namespace eod
}  // namespace tq
