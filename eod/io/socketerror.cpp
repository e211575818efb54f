#include <eod/io/socketerror.h>

#include "eod/io/detail/netplatform.h"

namespace tq {
namespace eod {
namespace io {

SocketError::SocketError(const std::string& message) : EODError(message) {}

const char* SocketError::className() const { return "SocketError"; }

std::string netLibErrorString(const std::string& message) {
    return message + ": " + detail::takeLastNetErrorDescription();
}

}  // namespace io
}  // namespace eod
}  // namespace tq
