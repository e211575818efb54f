#include "eod/io/detail/pathconversion.h"

#include <filesystem>

namespace tq {
namespace eod {
namespace io {
namespace detail {

// std::filesystem converts char32_t strings as UTF-32 regardless of the locale, which is
// why the wide string goes through u32string rather than straight into a path.
std::string narrowPath(const std::wstring& path) {
    try {
        return std::filesystem::path(std::u32string(path.begin(), path.end())).u8string();
    } catch (const std::exception&) {
        // Not valid UTF-32 (a lone surrogate, say): keep what fits in a byte.
        return std::string(path.begin(), path.end());
    }
}

std::wstring widePath(const std::string& path) {
    try {
        const std::u32string wide = std::filesystem::u8path(path).u32string();
        return std::wstring(wide.begin(), wide.end());
    } catch (const std::exception&) {
        // Not valid UTF-8: take the bytes one by one.
        return std::wstring(path.begin(), path.end());
    }
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
