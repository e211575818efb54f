#include <eod/gazeintersectionoutputdatabase.h>
#include <eod/gazeintersectionoutputdatav2.h>

#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

char GazeIntersectionOutputDataBase::latestGazeIntersectionObjectID() {
    return GazeIntersectionOutputDataV2::THIS_OBJECT_ID;
}

GazeIntersectionOutputDataBase::~GazeIntersectionOutputDataBase() = default;

void GazeIntersectionOutputDataBase::setScreenIntersectionWorldCoordinates(
    const std::vector<float>& world) {
    EOD_REQUIRE(world.size() == ARRAY_SIZE_3D_DATA, "3D vector expected");
    _screen_intersection_world_coords = world;
}

void GazeIntersectionOutputDataBase::setScreenIntersectionScreenCoordinates(
    const std::vector<float>& screen) {
    EOD_REQUIRE(screen.size() == ARRAY_SIZE_2D_DATA, "2D vector expected");
    _screen_intersection_screen_coords = screen;
}

void GazeIntersectionOutputDataBase::setScreenIntersectionPixelCoordinates(
    const std::vector<int>& pixel) {
    EOD_REQUIRE(pixel.size() == ARRAY_SIZE_2D_DATA, "2D vector expected");
    _screen_intersection_pixel_coords = pixel;
}

std::vector<float> GazeIntersectionOutputDataBase::gazeObjectIntersection() const {
    return std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
}

void GazeIntersectionOutputDataBase::setGazeObjectIntersection(const std::vector<float>&) {
    EOD_USAGE_ERROR(
        "setGazeObjectIntersection is not valid on this version of "
        "GazeIntersectionOutputDataBase");
}

void GazeIntersectionOutputDataBase::assignData(const GazeIntersectionOutputDataBase& other) {
    copyIntersectionFields(other);
}

void GazeIntersectionOutputDataBase::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "GAZE_OBJ_INDEX"
                        << "GAZE_OBJ_NAME"
                        << "GAZ_SCR_INTSECT"
                        << "GSI_WORLD_X"
                        << "GSI_WORLD_Y"
                        << "GSI_WORLD_Z"
                        << "GSI_SCREEN_X"
                        << "GSI_SCREEN_Y"
                        << "GSI_PIXEL_X"
                        << "GSI_PIXEL_Y";
}

}  // namespace eod
}  // namespace tq
