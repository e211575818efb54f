#include <eod/intersectionoutputbase.h>

#include <type_traits>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

const std::string& IntersectionOutputBase::defaultObjectName() {
    static const std::string name = "nothing";
    return name;
}

const std::string& IntersectionOutputBase::defaultScreenName() {
    static const std::string name = "Screen(1)";
    return name;
}

IntersectionOutputBase::IntersectionOutputBase()
    : _intersection_object_name(defaultObjectName()),
      _screen_intersection_world_coords(ARRAY_SIZE_3D_DATA, 0.0f),
      _screen_intersection_screen_coords(ARRAY_SIZE_2D_DATA, 0.0f),
      _screen_intersection_pixel_coords(ARRAY_SIZE_2D_DATA, 0) {}

IntersectionOutputBase::~IntersectionOutputBase() = default;

void IntersectionOutputBase::setIntersectionObjectName(const std::string& name) {
    EOD_REQUIRE(detail::hasNoNul(name), "name contains a NUL character");
    _intersection_object_name = name;
}

void IntersectionOutputBase::copyIntersectionFields(const IntersectionOutputBase& other) {
    _intersection_object_index = other._intersection_object_index;
    _intersection_object_name = other._intersection_object_name;
    _intersects_screen = other._intersects_screen;
    _screen_intersection_world_coords = other._screen_intersection_world_coords;
    _screen_intersection_screen_coords = other._screen_intersection_screen_coords;
    _screen_intersection_pixel_coords = other._screen_intersection_pixel_coords;
}

template <class Self, class V>
void IntersectionOutputBase::visitFields(Self& self, V& v) {
    v(self._intersection_object_index);
    // The name travels padded and is unpadded on reading. padString does not truncate, so
    // the size follows the padded name's real length.
    if constexpr (std::is_const<Self>::value) {
        v(padString(self._intersection_object_name, MAX_OBJ_NAME_LENGTH));
    } else {
        std::string padded;
        v(padded);
        self._intersection_object_name = unPadString(padded);
    }
    v(self._intersects_screen);
    v(self._screen_intersection_world_coords);
    v(self._screen_intersection_screen_coords);
    v(self._screen_intersection_pixel_coords);
}

unsigned int IntersectionOutputBase::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void IntersectionOutputBase::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void IntersectionOutputBase::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                    int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void IntersectionOutputBase::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _intersection_object_index << _intersection_object_name
                        << _intersects_screen << _screen_intersection_world_coords
                        << _screen_intersection_screen_coords << _screen_intersection_pixel_coords;
}

}  // namespace eod
}  // namespace tq
