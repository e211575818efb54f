#include <eod/gazeintersectionoutputdatav3.h>

namespace tq {
namespace eod {

// Definitions, so that the constants can also be bound to references.

GazeIntersectionOutputDataV3::~GazeIntersectionOutputDataV3() = default;

GazeIntersectionOutputDataV3* GazeIntersectionOutputDataV3::clone() const {
    return new GazeIntersectionOutputDataV3(*this);
}

}  // namespace eod
}  // namespace tq
