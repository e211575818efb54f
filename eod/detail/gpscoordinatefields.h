#ifndef EOD_DETAIL_GPSCOORDINATEFIELDS_H
#define EOD_DETAIL_GPSCOORDINATEFIELDS_H

// The GPS records write a coordinate field by field (never as a block of the structure, whose
// padding and byte order are the compiler's): degrees, minutes, seconds, hemisphere. Both
// coordinate generations share the field names, and both record generations share their
// first eleven text columns, so the two records share these helpers.

#include <string>

#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {
namespace detail {

template <class Coordinate, class V>
void visitCoordinateFields(Coordinate& c, V& v) {
    v(c.degrees);
    v(c.minutes);
    v(c.seconds);
    v(c.hemisphere);
}

// Four columns; the hemisphere is shown as its letter, the rest as numbers.
template <class Coordinate>
void printCoordinate(Columns& columns, const Coordinate& c) {
    columns << c.degrees << c.minutes << c.seconds << std::string(1, c.hemisphere);
}

// The eleven column labels both GPS record generations start with.
inline void printGPSFixLabels(Columns& columns) {
    columns << "GPS_VALID" << "GPS_GMT_TIME" << "GPS_LATITUDE_DEG" << "GPS_LATITUDE_MIN"
            << "GPS_LATITUDE_SEC" << "GPS_LATITUDE_HEM" << "GPS_LONGITUDE_DEG"
            << "GPS_LONGITUDE_MIN" << "GPS_LONGITUDE_SEC" << "GPS_LONGITUDE_HEM"
            << "GPS_SPEED_KM_H";
}

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
