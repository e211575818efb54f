#include <eod/gazeintersectionoutputdatav1.h>

namespace tq {
namespace eod {

GazeIntersectionOutputDataV1::~GazeIntersectionOutputDataV1() = default;

GazeIntersectionOutputDataV1* GazeIntersectionOutputDataV1::clone() const {
    return new GazeIntersectionOutputDataV1(*this);
}

}  // namespace eod
}  // namespace tq
