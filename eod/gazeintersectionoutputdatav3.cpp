#include <eod/gazeintersectionoutputdatav3.h>

namespace tq {
namespace eod {

GazeIntersectionOutputDataV3::~GazeIntersectionOutputDataV3() = default;

GazeIntersectionOutputDataV3* GazeIntersectionOutputDataV3::clone() const {
    return new GazeIntersectionOutputDataV3(*this);
}

}  // namespace eod
}  // namespace tq
