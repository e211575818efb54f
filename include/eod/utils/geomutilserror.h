#ifndef EOD_UTILS_GEOMUTILSERROR_H
#define EOD_UTILS_GEOMUTILSERROR_H

#include <eod/eoderror.h>

namespace tq {
namespace eod {
namespace utils {

// A geometric impossibility, such as two gaze rays that are parallel or that come closest
// behind an origin. Wrong vector sizes are not geometry errors but usage errors.
class GeomUtilsError : public EODError {
public:
    explicit GeomUtilsError(const std::string& message);
    const char* className() const override;
};

}  // namespace utils
}  // namespace eod
}  // namespace tq

#endif
