#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/worldoutputdatav2.h>

namespace tq {
namespace eod {

WorldOutputDataV2::~WorldOutputDataV2() = default;

WorldOutputDataV2* WorldOutputDataV2::clone() const { return new WorldOutputDataV2(*this); }

boost::shared_ptr<GazeIntersectionOutputDataV3> WorldOutputDataV2::gazeIntersectionOutputData() {
    return typedSubObject<GazeIntersectionOutputDataV3>(
        GazeIntersectionOutputDataV3::THIS_OBJECT_ID);
}

boost::shared_ptr<GazeIntersectionOutputDataV3 const>
WorldOutputDataV2::gazeIntersectionOutputData() const {
    return typedSubObject<GazeIntersectionOutputDataV3>(
        GazeIntersectionOutputDataV3::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadIntersectionOutputDataV2> WorldOutputDataV2::headIntersectionOutputData() {
    return typedSubObject<HeadIntersectionOutputDataV2>(
        HeadIntersectionOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<HeadIntersectionOutputDataV2 const>
WorldOutputDataV2::headIntersectionOutputData() const {
    return typedSubObject<HeadIntersectionOutputDataV2>(
        HeadIntersectionOutputDataV2::THIS_OBJECT_ID);
}

}  // namespace eod
}  // namespace tq
