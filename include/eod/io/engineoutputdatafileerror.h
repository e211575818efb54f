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
    // With the path of the log file the error is about, kept out of the message text.
    EngineOutputDataFileError(const std::string& message, const std::string& path);
    const char* className() const override;
    // The log file's path (UTF-8); empty when the error is about no single file.
    const std::string& path() const { return _path; }

  private:
    std::string _path;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
