#include <eod/utils/geomutilserror.h>

namespace tq {
namespace eod {
namespace utils {

GeomUtilsError::GeomUtilsError(const std::string& message) : EODError(message) {}

const char* GeomUtilsError::className() const { return "GeomUtilsError"; }

}  // namespace utils
}  // namespace eod
}  // namespace tq
