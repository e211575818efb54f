#include "eod/version.h"

namespace tq {
namespace eod {

// EOD_VERSION comes from the project version in the build.
const char* libraryVersion() { return EOD_VERSION; }

}  // namespace eod
}  // namespace tq
