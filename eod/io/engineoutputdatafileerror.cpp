#include <eod/io/engineoutputdatafileerror.h>

namespace tq {
namespace eod {
namespace io {

EngineOutputDataFileError::EngineOutputDataFileError(const std::string& message)
    : EODError(message) {}

const char* EngineOutputDataFileError::className() const { return "EngineOutputDataFileError"; }

}  // namespace io
}  // namespace eod
}  // namespace tq
