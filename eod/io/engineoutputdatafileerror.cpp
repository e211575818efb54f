#include <eod/io/engineoutputdatafileerror.h>

namespace tq {
namespace eod {
namespace io {

EngineOutputDataFileError::EngineOutputDataFileError(const std::string& message)
    : EODError(message) {}

EngineOutputDataFileError::EngineOutputDataFileError(const std::string& message,
                                                     const std::string& path)
    : EODError(message), _path(path) {}

const char* EngineOutputDataFileError::className() const { return "EngineOutputDataFileError"; }

}  // namespace io
}  // namespace eod
}  // namespace tq
