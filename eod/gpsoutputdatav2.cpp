#include <eod/gpsoutputdatav2.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/gpscoordinatefields.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

GPSOutputDataV2::~GPSOutputDataV2() = default;

GPSOutputDataV2* GPSOutputDataV2::clone() const { return new GPSOutputDataV2(*this); }

template <class Self, class V>
void GPSOutputDataV2::visitFields(Self& self, V& v) {
    v(self._data_valid);
    v(self._gmt_time);
    detail::visitCoordinateFields(self._latitude, v);
    detail::visitCoordinateFields(self._longitude, v);
    v(self._speed);
    v(self._course);
}

unsigned int GPSOutputDataV2::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void GPSOutputDataV2::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void GPSOutputDataV2::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                             int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void GPSOutputDataV2::printOwnHeader(std::ostream& os) const {
    detail::Columns columns(os);
    detail::printGPSFixLabels(columns);
    columns << "GPS_COURSE";
}

void GPSOutputDataV2::printOwnData(std::ostream& os) const {
    detail::Columns columns(os);
    columns << _data_valid << _gmt_time;
    detail::printCoordinate(columns, _latitude);
    detail::printCoordinate(columns, _longitude);
    columns << _speed << _course;
}

}  // namespace eod
}  // namespace tq
