#include <eod/eyeclosureoutputdata.h>

#include <cassert>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

EyeClosureOutputData::EyeClosureOutputData()
    : _eye_closure_frac(ARRAY_SIZE_PAIR_DATA), _eye_closure_confidence(ARRAY_SIZE_PAIR_DATA) {}

EyeClosureOutputData::~EyeClosureOutputData() = default;

void EyeClosureOutputData::copyFrom(const EyeClosureOutputData& other) { *this = other; }

EyeClosureOutputData* EyeClosureOutputData::clone() const {
    return new EyeClosureOutputData(*this);
}

float EyeClosureOutputData::eyeClosure(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _eye_closure_frac[eye_id];
}

float EyeClosureOutputData::eyeClosureConfidence(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _eye_closure_confidence[eye_id];
}

void EyeClosureOutputData::setEyeClosure(int eye_id, float closure) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(detail::inUnitRange(closure), "closure outside range 0..1");
    _eye_closure_frac[eye_id] = closure;
}

void EyeClosureOutputData::setEyeClosureConfidence(int eye_id, float confidence) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(detail::inUnitRange(confidence), "confidence outside range 0..1");
    _eye_closure_confidence[eye_id] = confidence;
}

void EyeClosureOutputData::setEyeClosureCalibStatus(float calib_status) {
    EOD_REQUIRE(detail::inUnitRange(calib_status), "calib_status outside range 0..1");
    _eye_closure_calib_status = calib_status;
}

void EyeClosureOutputData::setBlinkFrequency(float frequency) {
    EOD_REQUIRE(double(frequency) >= 0.0, "frequency less than zero");
    _blink_frequency = frequency;
}

void EyeClosureOutputData::setAverageBlinkDuration(float duration) {
    EOD_REQUIRE(double(duration) >= 0.0, "duration less than zero");
    _average_blink_duration = duration;
}

void EyeClosureOutputData::setPerclos(float perclos) {
    EOD_REQUIRE(detail::inUnitRange(perclos), "perclos outside range 0..1");
    _perclos = perclos;
}

void EyeClosureOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "RIGHT_EYE_CLOSE" << "LEFT_EYE_CLOSE" << "RIGHT_CLOS_CONF"
                        << "LEFT_CLOS_CONF" << "EYE_CLOSE_CALIB" << "BLINKING" << "BLINK_FREQ"
                        << "BLINK_DURATION" << "PERCLOS";
}

void EyeClosureOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _eye_closure_frac << _eye_closure_confidence
                        << _eye_closure_calib_status << _blinking << _blink_frequency
                        << _average_blink_duration << _perclos;
}

template <class Self, class V>
void EyeClosureOutputData::visitFields(Self& self, V& v) {
    assert(self._eye_closure_frac.size() == ARRAY_SIZE_PAIR_DATA);
    assert(self._eye_closure_confidence.size() == ARRAY_SIZE_PAIR_DATA);
    v(self._eye_closure_frac);
    v(self._eye_closure_confidence);
    v(self._eye_closure_calib_status);
    v(self._blinking);
    v(self._blink_frequency);
    v(self._average_blink_duration);
    v(self._perclos);
}

unsigned int EyeClosureOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void EyeClosureOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void EyeClosureOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                  int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

}  // namespace eod
}  // namespace tq
