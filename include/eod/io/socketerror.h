#ifndef EOD_IO_SOCKETERROR_H
#define EOD_IO_SOCKETERROR_H

#include <string>

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace io {

// A failure of the socket library. Operating-system failures carry the text of
// netLibErrorString: the failed call's own message, ": " and the last error's description.
class SocketError : public EODError {
public:
    explicit SocketError(const std::string& message);
    const char* className() const override;
};

// message + ": " + the description of the calling thread's last socket or host-lookup
// error ("No error message is defined for this exception." for codes without one). Reads
// and clears that last error, so call it on the failing thread, directly after the failure.
std::string netLibErrorString(const std::string& message);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
