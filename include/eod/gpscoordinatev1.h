#ifndef EOD_GPSCOORDINATEV1_H
#define EOD_GPSCOORDINATEV1_H

// An angle of a first-generation GPS fix in degrees, whole minutes and whole seconds, with
// its hemisphere letter ('N', 'S', 'E' or 'W'). Records write it field by field: degrees
// (2 bytes), minutes, seconds, hemisphere (1 byte each), never as a block of memory.

namespace tq {
namespace eod {

struct GPSCoordinateV1 {
    short degrees = 0;
    char minutes = 0;
    char seconds = 0;
    char hemisphere = 'N';
};

inline bool operator==(const GPSCoordinateV1& a, const GPSCoordinateV1& b) {
    return a.degrees == b.degrees && a.minutes == b.minutes && a.seconds == b.seconds &&
           a.hemisphere == b.hemisphere;
}

inline bool operator!=(const GPSCoordinateV1& a, const GPSCoordinateV1& b) { return !(a == b); }

}  // namespace eod
}  // namespace tq

#endif
