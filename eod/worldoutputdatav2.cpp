#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/worldoutputdatav2.h>

#include <boost/pointer_cast.hpp>

namespace tq {
namespace eod {

namespace {

// V4 is GazeIntersectionOutputDataV4, const when World is.
template <class V4, class World>
boost::shared_ptr<V4> gazeForEye(World& world, EyeId eye_id) {
    for (const auto& sub : world.subObjects(GazeIntersectionOutputDataV4::THIS_OBJECT_ID)) {
        const boost::shared_ptr<V4> gaze = boost::dynamic_pointer_cast<V4>(sub);
        if (gaze && gaze->eyeId() == eye_id) return gaze;
    }
    return boost::shared_ptr<V4>();
}

}  // namespace

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

boost::shared_ptr<GazeIntersectionOutputDataV4> WorldOutputDataV2::gazeIntersectionOutputDataV4(
    EyeId eye_id) {
    return gazeForEye<GazeIntersectionOutputDataV4>(*this, eye_id);
}

boost::shared_ptr<GazeIntersectionOutputDataV4 const>
WorldOutputDataV2::gazeIntersectionOutputDataV4(EyeId eye_id) const {
    return gazeForEye<GazeIntersectionOutputDataV4 const>(*this, eye_id);
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
