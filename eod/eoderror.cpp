#include <eod/eoderror.h>

namespace tq {
namespace eod {

EODError::EODError(const std::string& message) : std::runtime_error(message) {}

EODError::~EODError() = default;

}  // namespace eod
}  // namespace tq
