#ifndef EOD_TOOLS_RECORDSCAN_H
#define EOD_TOOLS_RECORDSCAN_H

// Walks a raw record file or a log file record by record, without merging, and counts
// what it finds: frames, sub-records per object id, and everything the frame ledger
// reports.

#include <cstdint>
#include <istream>
#include <map>
#include <string>

#include "frameledger.h"

namespace eodtool {

struct IdStats {
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
};

struct FileScan {
    std::string path;
    std::uint64_t size = 0;
    std::uint64_t records = 0;
    // Records a registered class could decode.
    std::uint64_t known_records = 0;
    FrameLedger ledger;
    // Top-level records that are not frames, and the sub-records of frames, by object id.
    std::map<int, IdStats> by_id;
};

// Records larger than this (header included) are counted as corrupt, not decoded.
const std::uint64_t kMaxScannedRecordSize = 64u << 20;

// A regular file only: anything else (a FIFO, a device, a directory) is refused with
// ToolError "<path>: not a regular file", since reading it could block or never end.
FileScan scanRecordFile(const std::string& path);
// The same for `size` bytes of a stream, which is read once from front to back.
FileScan scanRecordStream(std::istream& in, std::uint64_t size, const std::string& path);

// The class registered for an object id, without its namespace ("HeadOutputDataV2"),
// or "unknown".
std::string objectName(int object_id);

}  // namespace eodtool

#endif
