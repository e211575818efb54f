#ifndef EOD_DETAIL_USAGEERROR_H
#define EOD_DETAIL_USAGEERROR_H

#include <string>

// Errors of the calling program (wrong call order, argument out of range) are
// std::invalid_argument with the text "<module path>:<line>: <reason>". The build maps
// the source directory away from __FILE__; the path is written with backslashes as its
// separators, whatever the platform, so it reads "eod\serializable.cpp" everywhere and
// programs that match these texts need one pattern.

namespace tq {
namespace eod {
namespace detail {

[[noreturn]] void throwUsageError(const char* file, int line, const std::string& reason);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#define EOD_USAGE_ERROR(reason) ::tq::eod::detail::throwUsageError(__FILE__, __LINE__, (reason))

#define EOD_REQUIRE(condition, reason)   \
    do {                                 \
        if (!(condition)) {              \
            EOD_USAGE_ERROR(reason);     \
        }                                \
    } while (false)

#endif
