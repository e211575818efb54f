#ifndef EOD_DETAIL_SETTERCHECKS_H
#define EOD_DETAIL_SETTERCHECKS_H

// Checks shared by the record setters.

#include <string>

#include <eod/engineoutputbase.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace detail {

// 0..1 inclusive. Callers pass floats widened to double, so no rounding stretches the range;
// NaN fails both comparisons.
inline bool inUnitRange(double value) { return value >= 0.0 && value <= 1.0; }

// Strings travel terminated by a NUL byte: one that holds a NUL would read back cut short,
// and the record around it not at all. Their setters refuse such strings.
inline bool hasNoNul(const std::string& text) { return text.find('\0') == std::string::npos; }

}  // namespace detail
}  // namespace eod
}  // namespace tq

// A per-eye pair holds RIGHT_EYE and LEFT_EYE only. A macro, so that the usage error names
// the calling module and line.
#define EOD_REQUIRE_SINGLE_EYE(eye_id)                                                \
    EOD_REQUIRE((eye_id) == ::tq::eod::RIGHT_EYE || (eye_id) == ::tq::eod::LEFT_EYE, \
                "eye_id neither LEFT_EYE nor RIGHT_EYE")

#endif
