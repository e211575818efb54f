#ifndef EOD_IO_INETADDRESSEXCEPTION_H
#define EOD_IO_INETADDRESSEXCEPTION_H

#include <string>

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace io {

// An address that cannot be built: a host name that does not resolve, or a local address
// table that cannot be read.
class InetAddressException : public EODError {
public:
    explicit InetAddressException(const std::string& message);
    const char* className() const override;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
