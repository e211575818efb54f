#include <eod/io/inetaddressexception.h>

namespace tq {
namespace eod {
namespace io {

InetAddressException::InetAddressException(const std::string& message) : EODError(message) {}

const char* InetAddressException::className() const { return "InetAddressException"; }

}  // namespace io
}  // namespace eod
}  // namespace tq
