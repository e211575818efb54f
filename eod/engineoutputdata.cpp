#include <eod/engineoutputdata.h>

#include "eod/bytecodec.h"
#include "eod/textcolumns.h"

namespace tq {
namespace eod {

const char EngineOutputData::THIS_OBJECT_ID;
const char EngineOutputData::ENGINE_OUTPUT_DATA_ID;

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

}  // namespace eod
}  // namespace tq
