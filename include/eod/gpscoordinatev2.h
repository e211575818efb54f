#ifndef EOD_GPSCOORDINATEV2_H
#define EOD_GPSCOORDINATEV2_H

// An angle of a GPS fix in degrees, whole minutes and fractional seconds, with its
// hemisphere letter ('N', 'S', 'E' or 'W'). Records write it field by field: degrees
// (2 bytes), minutes (1), seconds (4, float), hemisphere (1), never as a block of memory.

namespace tq {
namespace eod {

struct GPSCoordinateV2 {
    short degrees = 0;
    char minutes = 0;
    float seconds = 0.0f;
    char hemisphere = 'N';
};

inline bool operator==(const GPSCoordinateV2& a, const GPSCoordinateV2& b) {
    return a.degrees == b.degrees && a.minutes == b.minutes && a.seconds == b.seconds &&
           a.hemisphere == b.hemisphere;
}

inline bool operator!=(const GPSCoordinateV2& a, const GPSCoordinateV2& b) { return !(a == b); }

}  // namespace eod
}  // namespace tq

#endif
