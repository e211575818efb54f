#ifndef EOD_IO_COMPRESS_COMPRESSIONERROR_H
#define EOD_IO_COMPRESS_COMPRESSIONERROR_H

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace io {

// Failures of the compression subsystem that are not record decoding errors: an unknown
// codec or profile name, a container file that cannot be opened, written or read, or whose
// bytes are damaged (the message then names the file and the byte offset).
class CompressionError : public EODError {
  public:
    explicit CompressionError(const std::string& message);
    const char* className() const override;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
