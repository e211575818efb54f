#include <eod/io/compress/compressionerror.h>

namespace tq {
namespace eod {
namespace io {

CompressionError::CompressionError(const std::string& message) : EODError(message) {}

const char* CompressionError::className() const { return "CompressionError"; }

}  // namespace io
}  // namespace eod
}  // namespace tq
