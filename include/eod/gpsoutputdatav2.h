#ifndef EOD_GPSOUTPUTDATAV2_H
#define EOD_GPSOUTPUTDATAV2_H

// A GPS fix with fractional seconds, float speed and course. Engine-specific data
// (29 bytes): data valid (bool), GMT time (unsigned int), latitude and longitude (each
// degrees (short), minutes (one byte), seconds (float), hemisphere (one byte)), speed in
// km/h (float), course (float). No setter checks its argument.

#include <vector>

#include <eod/engineoutputbase.h>
#include <eod/gpscoordinatev2.h>

namespace tq {
namespace eod {

class GPSOutputDataV2 : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 35;
    static constexpr char GPS_OUTPUT_DATA_ID = 35;

    GPSOutputDataV2() = default;
    GPSOutputDataV2(const GPSOutputDataV2&) = default;
    GPSOutputDataV2& operator=(const GPSOutputDataV2&) = default;
    ~GPSOutputDataV2() override;
    void copyFrom(const GPSOutputDataV2& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    GPSOutputDataV2* clone() const override;

    bool isDataValid() const { return _data_valid; }
    void setDataValid(bool valid) { _data_valid = valid; }
    unsigned int gmtTime() const { return _gmt_time; }
    void setGMTTime(unsigned int time) { _gmt_time = time; }
    GPSCoordinateV2 latitude() const { return _latitude; }
    void setLatitude(const GPSCoordinateV2& latitude) { _latitude = latitude; }
    GPSCoordinateV2 longitude() const { return _longitude; }
    void setLongitude(const GPSCoordinateV2& longitude) { _longitude = longitude; }
    float speed() const { return _speed; }
    void setSpeed(float speed) { _speed = speed; }
    float course() const { return _course; }
    void setCourse(float course) { _course = course; }

    // The eleven columns of GPSOutputData, then "GPS_COURSE".
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
    GPSCoordinateV2 _latitude;
    GPSCoordinateV2 _longitude;
    float _speed = 0.0f;
    float _course = 0.0f;
};

}  // namespace eod
}  // namespace tq

#endif
