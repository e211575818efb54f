#ifndef EOD_IO_SERIALPORTERROR_H
#define EOD_IO_SERIALPORTERROR_H

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace io {

// A failed serial-port operation. timeout() tells a line that stayed silent (or a device
// that would not take bytes) for longer than the port's time-out apart from a real fault,
// so that a receive loop can simply try again.
class SerialPortError : public EODError {
public:
    SerialPortError(const std::string& message, bool timeout);
    const char* className() const override;
    bool timeout() const;

private:
    bool _timeout;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
