#ifndef EOD_GPSOUTPUTDATA_H
#define EOD_GPSOUTPUTDATA_H

// A first-generation GPS fix. Engine-specific data (17 bytes): data valid (bool), GMT time
// (unsigned int), latitude and longitude (each degrees (short), minutes, seconds and
// hemisphere (one byte each)), speed in km/h (short, -1 when unknown). No setter checks
// its argument.

#include <vector>

#include <eod/engineoutputbase.h>
#include <eod/gpscoordinatev1.h>

namespace tq {
namespace eod {

class GPSOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 34;
    static constexpr char GPS_OUTPUT_DATA_ID = 34;

    GPSOutputData() = default;
    GPSOutputData(const GPSOutputData&) = default;
    GPSOutputData& operator=(const GPSOutputData&) = default;
    ~GPSOutputData() override;
    void copyFrom(const GPSOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    GPSOutputData* clone() const override;

    bool isDataValid() const { return _data_valid; }
    void setDataValid(bool valid) { _data_valid = valid; }
    unsigned int gmtTime() const { return _gmt_time; }
    void setGMTTime(unsigned int time) { _gmt_time = time; }
    GPSCoordinateV1 latitude() const { return _latitude; }
    void setLatitude(const GPSCoordinateV1& latitude) { _latitude = latitude; }
    GPSCoordinateV1 longitude() const { return _longitude; }
    void setLongitude(const GPSCoordinateV1& longitude) { _longitude = longitude; }
    short speed() const { return _speed; }
    void setSpeed(short speed) { _speed = speed; }

    // "GPS_VALID", "GPS_GMT_TIME", "GPS_LATITUDE_DEG", "GPS_LATITUDE_MIN", "GPS_LATITUDE_SEC",
    // "GPS_LATITUDE_HEM", the same four for "GPS_LONGITUDE_", "GPS_SPEED_KM_H". Hemispheres
    // print as their letters.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    bool _data_valid = false;
    unsigned int _gmt_time = 0;
    GPSCoordinateV1 _latitude;
    GPSCoordinateV1 _longitude;
    short _speed = -1;
};

}  // namespace eod
}  // namespace tq

#endif
