#ifndef EOD_IO_ENGINEOUTPUTDATAFILEERROR_H
#define EOD_IO_ENGINEOUTPUTDATAFILEERROR_H

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace io {

// File and format failures of the per-object log files.
class EngineOutputDataFileError : public EODError {
  public:
    explicit EngineOutputDataFileError(const std::string& message);
    const char* className() const override;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
