#include <eod/io/serialporterror.h>

namespace tq {
namespace eod {
namespace io {

SerialPortError::SerialPortError(const std::string& message, bool timeout)
    : EODError(message), _timeout(timeout) {}

const char* SerialPortError::className() const { return "SerialPortError"; }

bool SerialPortError::timeout() const { return _timeout; }

}  // namespace io
}  // namespace eod
}  // namespace tq
