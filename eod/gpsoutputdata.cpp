#include <eod/gpsoutputdata.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/gpscoordinatefields.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {

GPSOutputData::~GPSOutputData() = default;

GPSOutputData* GPSOutputData::clone() const { return new GPSOutputData(*this); }

template <class Self, class V>
void GPSOutputData::visitFields(Self& self, V& v) {
    v(self._data_valid);
    v(self._gmt_time);
    detail::visitCoordinateFields(self._latitude, v);
    detail::visitCoordinateFields(self._longitude, v);
    v(self._speed);
}

unsigned int GPSOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void GPSOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void GPSOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                           int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

void GPSOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns columns(os);
    detail::printGPSFixLabels(columns);
}

void GPSOutputData::printOwnData(std::ostream& os) const {
    detail::Columns columns(os);
    columns << _data_valid << _gmt_time;
    detail::printCoordinate(columns, _latitude);
    detail::printCoordinate(columns, _longitude);
    columns << _speed;
}

}  // namespace eod
}  // namespace tq
