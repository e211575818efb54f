#ifndef EOD_IO_DETAIL_PATHCONVERSION_H
#define EOD_IO_DETAIL_PATHCONVERSION_H

// Paths are accepted as narrow and as wide strings; one overload converts and forwards to
// the other. On this platform narrow paths are UTF-8 and wide strings hold UTF-32 code
// points, whatever the process locale says.

#include <string>

namespace tq {
namespace eod {
namespace io {
namespace detail {

std::string narrowPath(const std::wstring& path);
std::wstring widePath(const std::string& path);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
