#include <eod/headintersectionoutputdatav1.h>

#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

HeadIntersectionOutputDataV1::~HeadIntersectionOutputDataV1() = default;

HeadIntersectionOutputDataV1* HeadIntersectionOutputDataV1::clone() const {
    return new HeadIntersectionOutputDataV1(*this);
}

void HeadIntersectionOutputDataV1::setScreenIntersectionWorldCoordinates(
    const std::vector<float>& world) {
    EOD_REQUIRE(world.size() == ARRAY_SIZE_3D_DATA, "screen_intersection not a 3D coordinate");
    _screen_intersection_world_coords = world;
}

void HeadIntersectionOutputDataV1::setScreenIntersectionScreenCoordinates(
    const std::vector<float>& screen) {
    EOD_REQUIRE(screen.size() == ARRAY_SIZE_2D_DATA, "screen_intersection not a 2D coordinate");
    _screen_intersection_screen_coords = screen;
}

void HeadIntersectionOutputDataV1::setScreenIntersectionPixelCoordinates(
    const std::vector<int>& pixel) {
    EOD_REQUIRE(pixel.size() == ARRAY_SIZE_2D_DATA, "screen_intersection not a 2D coordinate");
    _screen_intersection_pixel_coords = pixel;
}

void HeadIntersectionOutputDataV1::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "HEAD_OBJ_INDEX"
                        << "HEAD_OBJ_NAME"
                        << "CYC_SCR_INTSECT"
                        << "CSI_WORLD_X"
                        << "CSI_WORLD_Y"
                        << "CSI_WORLD_Z"
                        << "CSI_SCREEN_X"
                        << "CSI_SCREEN_Y"
                        << "CSI_PIXEL_X"
                        << "CSI_PIXEL_Y";
}

}  // namespace eod
}  // namespace tq
