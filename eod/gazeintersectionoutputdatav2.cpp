#include <eod/gazeintersectionoutputdatav2.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

GazeIntersectionOutputDataV2::GazeIntersectionOutputDataV2()
    : _gaze_object_intersection(ARRAY_SIZE_3D_DATA, 0.0f) {}

GazeIntersectionOutputDataV2::~GazeIntersectionOutputDataV2() = default;

GazeIntersectionOutputDataV2* GazeIntersectionOutputDataV2::clone() const {
    return new GazeIntersectionOutputDataV2(*this);
}

void GazeIntersectionOutputDataV2::setGazeObjectIntersection(
    const std::vector<float>& intersection) {
    EOD_REQUIRE(intersection.size() == ARRAY_SIZE_3D_DATA, "3D vector expected");
    _gaze_object_intersection = intersection;
}

void GazeIntersectionOutputDataV2::assignData(const GazeIntersectionOutputDataBase& other) {
    GazeIntersectionOutputDataBase::assignData(other);
    _gaze_object_intersection = other.gazeObjectIntersection();
}

template <class Self, class V>
void GazeIntersectionOutputDataV2::visitFields(Self& self, V& v) {
    v(self._gaze_object_intersection);
}

unsigned int GazeIntersectionOutputDataV2::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return GazeIntersectionOutputDataBase::numEngineSpecificDataBytes() + s.bytes;
}

void GazeIntersectionOutputDataV2::appendEngineSpecificData(
    std::vector<unsigned char>& buffer) const {
    GazeIntersectionOutputDataBase::appendEngineSpecificData(buffer);
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void GazeIntersectionOutputDataV2::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                          int& read_pos) {
    GazeIntersectionOutputDataBase::readEngineSpecificData(buffer, read_pos);
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void GazeIntersectionOutputDataV2::printOwnHeader(std::ostream& os) const {
    detail::TextLine line(os);
    GazeIntersectionOutputDataBase::printOwnHeader(os);
    detail::Columns(os) << "GOI_X"
                        << "GOI_Y"
                        << "GOI_Z";
}

void GazeIntersectionOutputDataV2::printOwnData(std::ostream& os) const {
    detail::TextLine line(os);
    GazeIntersectionOutputDataBase::printOwnData(os);
    detail::Columns(os) << _gaze_object_intersection;
}

}  // namespace eod
}  // namespace tq
