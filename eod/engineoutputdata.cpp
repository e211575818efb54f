#include <eod/engineoutputdata.h>

#include <eod/enginestateoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/inertiaoutputdata.h>
#include <eod/timingoutputdata.h>

#include "eod/bytecodec.h"
#include "eod/textcolumns.h"

namespace tq {
namespace eod {

EngineOutputData::~EngineOutputData() = default;

EngineOutputData* EngineOutputData::clone() const { return new EngineOutputData(*this); }

void EngineOutputData::reset() {
    clearSubObjects();
    _frame_num = 0;
    setSerializeEnabled(true);
}

const std::wstring& EngineOutputData::LOGFILE_EXTENSION() {
    static const std::wstring extension = L".tql";
    return extension;
}

const std::wstring& EngineOutputData::LOGFILE_INDEX_EXTENSION() {
    static const std::wstring extension = L".itql";
    return extension;
}

void EngineOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "FRAME_NUM";
}

void EngineOutputData::printOwnData(std::ostream& os) const { detail::Columns(os) << _frame_num; }

void EngineOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, _frame_num);
}

void EngineOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                              int& read_pos) {
    _frame_num = detail::readNumber<unsigned int>(buffer, read_pos);
}

boost::shared_ptr<TimingOutputData> EngineOutputData::timingOutputData() {
    return typedSubObject<TimingOutputData>(TimingOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<TimingOutputData const> EngineOutputData::timingOutputData() const {
    return typedSubObject<TimingOutputData>(TimingOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<EngineStateOutputData> EngineOutputData::engineStateOutputData() {
    return typedSubObject<EngineStateOutputData>(EngineStateOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<EngineStateOutputData const> EngineOutputData::engineStateOutputData() const {
    return typedSubObject<EngineStateOutputData>(EngineStateOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<FeatureSetsByCamera> EngineOutputData::featureSetsByCamera() {
    return typedSubObject<FeatureSetsByCamera>(FeatureSetsByCamera::THIS_OBJECT_ID);
}

boost::shared_ptr<FeatureSetsByCamera const> EngineOutputData::featureSetsByCamera() const {
    return typedSubObject<FeatureSetsByCamera>(FeatureSetsByCamera::THIS_OBJECT_ID);
}

boost::shared_ptr<InertiaOutputData> EngineOutputData::inertiaOutputData() {
    return typedSubObject<InertiaOutputData>(InertiaOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<InertiaOutputData const> EngineOutputData::inertiaOutputData() const {
    return typedSubObject<InertiaOutputData>(InertiaOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<GPSOutputData> EngineOutputData::gpsOutputData() {
    return typedSubObject<GPSOutputData>(GPSOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<GPSOutputData const> EngineOutputData::gpsOutputData() const {
    return typedSubObject<GPSOutputData>(GPSOutputData::THIS_OBJECT_ID);
}

boost::shared_ptr<GPSOutputDataV2> EngineOutputData::gpsOutputDataV2() {
    return typedSubObject<GPSOutputDataV2>(GPSOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<GPSOutputDataV2 const> EngineOutputData::gpsOutputDataV2() const {
    return typedSubObject<GPSOutputDataV2>(GPSOutputDataV2::THIS_OBJECT_ID);
}

boost::shared_ptr<TimingOutputData> timingOutputData(EngineOutputData& frame) {
    return frame.timingOutputData();
}

boost::shared_ptr<EngineStateOutputData> engineStateOutputData(EngineOutputData& frame) {
    return frame.engineStateOutputData();
}

boost::shared_ptr<FeatureSetsByCamera> featureSetsByCamera(EngineOutputData& frame) {
    return frame.featureSetsByCamera();
}

boost::shared_ptr<InertiaOutputData> inertiaOutputData(EngineOutputData& frame) {
    return frame.inertiaOutputData();
}

boost::shared_ptr<TimingOutputData> addTimingOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<TimingOutputData>();
}

boost::shared_ptr<EngineStateOutputData> addEngineStateOutputDataIfMissing(
    EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<EngineStateOutputData>();
}

boost::shared_ptr<FeatureSetsByCamera> addFeatureSetsByCameraIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<FeatureSetsByCamera>();
}

boost::shared_ptr<InertiaOutputData> addInertiaOutputDataIfMissing(EngineOutputData& frame) {
    return frame.typedSubObjectAddIfMissing<InertiaOutputData>();
}

}  // namespace eod
}  // namespace tq
