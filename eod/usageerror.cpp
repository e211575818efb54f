#include "eod/detail/usageerror.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace tq {
namespace eod {
namespace detail {

void throwUsageError(const char* file, int line, const std::string& reason) {
    std::string path(file);
    std::replace(path.begin(), path.end(), '/', '\\');
    std::ostringstream text;
    text << path << ':' << line << ": " << reason;
    throw std::invalid_argument(text.str());
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
