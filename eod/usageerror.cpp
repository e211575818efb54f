#include "eod/usageerror.h"

#include <sstream>
#include <stdexcept>

namespace tq {
namespace eod {
namespace detail {

void throwUsageError(const char* file, int line, const std::string& reason) {
    std::ostringstream text;
    text << file << ':' << line << ": " << reason;
    throw std::invalid_argument(text.str());
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
