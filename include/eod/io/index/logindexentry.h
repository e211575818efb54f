#ifndef EOD_IO_INDEX_LOGINDEXENTRY_H
#define EOD_IO_INDEX_LOGINDEXENTRY_H

#include <cstdint>

namespace tq {
namespace eod {
namespace io {

// One record of a log file: the frame number it carries and where its first byte is.
struct LogIndexEntry {
    unsigned int frame_num = 0;
    std::uint64_t offset = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
