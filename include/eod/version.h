#ifndef EOD_VERSION_H
#define EOD_VERSION_H

namespace tq {
namespace eod {

// The version of the library that is loaded ("0.1.0"), which may differ from the one a
// program was built against.
const char* libraryVersion();

}  // namespace eod
}  // namespace tq

#endif
