#include <eod/headintersectionoutputdatav2.h>

namespace tq {
namespace eod {

HeadIntersectionOutputDataV2::~HeadIntersectionOutputDataV2() = default;

HeadIntersectionOutputDataV2* HeadIntersectionOutputDataV2::clone() const {
    return new HeadIntersectionOutputDataV2(*this);
}

}  // namespace eod
}  // namespace tq
