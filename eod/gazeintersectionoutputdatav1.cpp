#include <eod/gazeintersectionoutputdatav1.h>

namespace tq {
namespace eod {

// Definitions, so that the constants can also be bound to references.

GazeIntersectionOutputDataV1::~GazeIntersectionOutputDataV1() = default;

GazeIntersectionOutputDataV1* GazeIntersectionOutputDataV1::clone() const {
    return new GazeIntersectionOutputDataV1(*this);
}

}  // namespace eod
}  // namespace tq
