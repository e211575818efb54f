#include "eod/startupregistrations.h"

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/engineoutputdata.h>
#include <eod/eyeclosureoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/gazeoutputdata.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/pupiloutputdata.h>

namespace tq {
namespace eod {
namespace detail {

// Fixed order: 9, 40, 41, 42, 11, 16, 91, 93, 94, 15, 13, 12, 14, 10, 19, 43, 18, 29, 44,
// 39, 17, 20, 45, 30, 31, 32, 36, 34, 35, 92, 95, 96.
const std::vector<StartupRegistration>& startupRegistrations() {
    static const std::vector<StartupRegistration> table = {
        {EngineOutputData::THIS_OBJECT_ID, &createRecord<EngineOutputData>},
        {HeadOutputData::THIS_OBJECT_ID, &createRecord<HeadOutputData>},
        {HeadOutputDataV2::THIS_OBJECT_ID, &createRecord<HeadOutputDataV2>},
        {EyeOutputData::THIS_OBJECT_ID, &createRecord<EyeOutputData>},
        {GazeOutputData::THIS_OBJECT_ID, &createRecord<GazeOutputData>},
        {EyeClosureOutputData::THIS_OBJECT_ID, &createRecord<EyeClosureOutputData>},
        {PupilOutputData::THIS_OBJECT_ID, &createRecord<PupilOutputData>},
        {CompressedSerializable::THIS_OBJECT_ID, &createRecord<CompressedSerializable>},
        {CompressedSerializableToken::THIS_OBJECT_ID, &createRecord<CompressedSerializableToken>},
    };
    return table;
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
