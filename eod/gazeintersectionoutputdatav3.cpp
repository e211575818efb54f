#include <eod/gazeintersectionoutputdatav3.h>

namespace tq {
namespace eod {

// Definitions, so that the constants can also be bound to references.
const char GazeIntersectionOutputDataV3::THIS_OBJECT_ID;
const char GazeIntersectionOutputDataV3::GAZE_INTERSECTION_OUTPUT_DATA_ID;

GazeIntersectionOutputDataV3::~GazeIntersectionOutputDataV3() = default;

GazeIntersectionOutputDataV3* GazeIntersectionOutputDataV3::clone() const {
    return new GazeIntersectionOutputDataV3(*this);
}

}  // namespace eod
}  // namespace tq
