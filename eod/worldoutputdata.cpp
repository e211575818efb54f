#include <eod/gazeintersectionoutputdatav1.h>
#include <eod/gazeintersectionoutputdatav2.h>
#include <eod/headintersectionoutputdatav1.h>
#include <eod/worldoutputdata.h>

namespace tq {
namespace eod {

WorldOutputData::~WorldOutputData() = default;

WorldOutputData* WorldOutputData::clone() const { return new WorldOutputData(*this); }

boost::shared_ptr<GazeIntersectionOutputDataBase> WorldOutputData::gazeIntersectionOutputData() {
    boost::shared_ptr<GazeIntersectionOutputDataBase> gaze =
        typedSubObject<GazeIntersectionOutputDataBase>(
            GazeIntersectionOutputDataV2::THIS_OBJECT_ID);
    if (gaze) return gaze;
    return typedSubObject<GazeIntersectionOutputDataBase>(
        GazeIntersectionOutputDataV1::THIS_OBJECT_ID);
}

boost::shared_ptr<GazeIntersectionOutputDataBase const>
WorldOutputData::gazeIntersectionOutputData() const {
    boost::shared_ptr<GazeIntersectionOutputDataBase const> gaze =
        typedSubObject<GazeIntersectionOutputDataBase>(
            GazeIntersectionOutputDataV2::THIS_OBJECT_ID);
    if (gaze) return gaze;
    return typedSubObject<GazeIntersectionOutputDataBase>(
        GazeIntersectionOutputDataV1::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadIntersectionOutputDataV1> WorldOutputData::headIntersectionOutputData() {
    return typedSubObject<HeadIntersectionOutputDataV1>(
        HeadIntersectionOutputDataV1::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadIntersectionOutputDataV1 const> WorldOutputData::headIntersectionOutputData()
    const {
    return typedSubObject<HeadIntersectionOutputDataV1>(
        HeadIntersectionOutputDataV1::THIS_OBJECT_ID);
}

}  // namespace eod
}  // namespace tq
