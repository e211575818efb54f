#include "eod/detail/startupregistrations.h"

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/customeventoutputdata.h>
#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/eyeclosureoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/facetextureoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gazeintersectionoutputdatav1.h>
#include <eod/gazeintersectionoutputdatav2.h>
#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/gazeoutputdata.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headintersectionoutputdatav1.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/imageoutputdata.h>
#include <eod/inertiaoutputdata.h>
#include <eod/irpodstateoutputdata.h>
#include <eod/pupiloutputdata.h>
#include <eod/timingoutputdata.h>
#include <eod/worldoutputdata.h>
#include <eod/worldoutputdatav2.h>

namespace tq {
namespace eod {
namespace detail {

// Fixed order: 9, 40, 41, 42, 11, 16, 91, 93, 94, 15, 13, 12, 14, 10, 19, 43, 18, 29, 44,
// 39, 17, 20, 45, 30, 31, 32, 36, 34, 35, 92, 95, 96.
const std::vector<StartupRegistration>& startupRegistrations() {
    static const std::vector<StartupRegistration> table = {
        {EngineOutputData::THIS_OBJECT_ID, &createRecord<EngineOutputData>},
        {EngineStateOutputData::THIS_OBJECT_ID, &createRecord<EngineStateOutputData>},
        {HeadTrackerStateOutputData::THIS_OBJECT_ID, &createRecord<HeadTrackerStateOutputData>},
        {IRPodStateOutputData::THIS_OBJECT_ID, &createRecord<IRPodStateOutputData>},
        {HeadOutputData::THIS_OBJECT_ID, &createRecord<HeadOutputData>},
        {HeadOutputDataV2::THIS_OBJECT_ID, &createRecord<HeadOutputDataV2>},
        {FaceOutputData::THIS_OBJECT_ID, &createRecord<FaceOutputData>},
        {FaceOutputDataV2::THIS_OBJECT_ID, &createRecord<FaceOutputDataV2>},
        {FaceSetOutputData::THIS_OBJECT_ID, &createRecord<FaceSetOutputData>},
        {EyeOutputData::THIS_OBJECT_ID, &createRecord<EyeOutputData>},
        {GazeOutputData::THIS_OBJECT_ID, &createRecord<GazeOutputData>},
        {EyeClosureOutputData::THIS_OBJECT_ID, &createRecord<EyeClosureOutputData>},
        {PupilOutputData::THIS_OBJECT_ID, &createRecord<PupilOutputData>},
        {TimingOutputData::THIS_OBJECT_ID, &createRecord<TimingOutputData>},
        {WorldOutputData::THIS_OBJECT_ID, &createRecord<WorldOutputData>},
        {WorldOutputDataV2::THIS_OBJECT_ID, &createRecord<WorldOutputDataV2>},
        {GazeIntersectionOutputDataV1::THIS_OBJECT_ID, &createRecord<GazeIntersectionOutputDataV1>},
        {GazeIntersectionOutputDataV2::THIS_OBJECT_ID, &createRecord<GazeIntersectionOutputDataV2>},
        {GazeIntersectionOutputDataV3::THIS_OBJECT_ID, &createRecord<GazeIntersectionOutputDataV3>},
        {GazeIntersectionOutputDataV4::THIS_OBJECT_ID, &createRecord<GazeIntersectionOutputDataV4>},
        {HeadIntersectionOutputDataV1::THIS_OBJECT_ID, &createRecord<HeadIntersectionOutputDataV1>},
        {FeatureSetsByCamera::THIS_OBJECT_ID, &createRecord<FeatureSetsByCamera>},
        {HeadIntersectionOutputDataV2::THIS_OBJECT_ID, &createRecord<HeadIntersectionOutputDataV2>},
        {ImageCollectionOutputData::THIS_OBJECT_ID, &createRecord<ImageCollectionOutputData>},
        {ImageOutputData::THIS_OBJECT_ID, &createRecord<ImageOutputData>},
        {InertiaOutputData::THIS_OBJECT_ID, &createRecord<InertiaOutputData>},
        {CustomEventOutputData::THIS_OBJECT_ID, &createRecord<CustomEventOutputData>},
        {GPSOutputData::THIS_OBJECT_ID, &createRecord<GPSOutputData>},
        {GPSOutputDataV2::THIS_OBJECT_ID, &createRecord<GPSOutputDataV2>},
        {FaceTextureOutputData::THIS_OBJECT_ID, &createRecord<FaceTextureOutputData>},
        {CompressedSerializable::THIS_OBJECT_ID, &createRecord<CompressedSerializable>},
        {CompressedSerializableToken::THIS_OBJECT_ID, &createRecord<CompressedSerializableToken>},
    };
    return table;
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
