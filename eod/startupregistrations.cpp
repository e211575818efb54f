#include "eod/startupregistrations.h"

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/customeventoutputdata.h>
#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/inertiaoutputdata.h>
#include <eod/irpodstateoutputdata.h>
#include <eod/timingoutputdata.h>

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
        {TimingOutputData::THIS_OBJECT_ID, &createRecord<TimingOutputData>},
        {FeatureSetsByCamera::THIS_OBJECT_ID, &createRecord<FeatureSetsByCamera>},
        {InertiaOutputData::THIS_OBJECT_ID, &createRecord<InertiaOutputData>},
        {CustomEventOutputData::THIS_OBJECT_ID, &createRecord<CustomEventOutputData>},
        {GPSOutputData::THIS_OBJECT_ID, &createRecord<GPSOutputData>},
        {GPSOutputDataV2::THIS_OBJECT_ID, &createRecord<GPSOutputDataV2>},
        {CompressedSerializable::THIS_OBJECT_ID, &createRecord<CompressedSerializable>},
        {CompressedSerializableToken::THIS_OBJECT_ID, &createRecord<CompressedSerializableToken>},
    };
    return table;
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
