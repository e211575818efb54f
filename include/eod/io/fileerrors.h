#ifndef EOD_IO_FILEERRORS_H
#define EOD_IO_FILEERRORS_H

#include <string>

namespace tq {
namespace eod {
namespace io {

// SerializableError "Failed to open file '<path>'." / "Failed to write to file '<path>'.";
// a wide path is converted to UTF-8 first.
[[noreturn]] void throwFileOpenError(const std::string& path);
[[noreturn]] void throwFileOpenError(const std::wstring& path);
[[noreturn]] void throwFileWriteError(const std::string& path);
[[noreturn]] void throwFileWriteError(const std::wstring& path);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
