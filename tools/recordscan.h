#ifndef EOD_TOOLS_RECORDSCAN_H
#define EOD_TOOLS_RECORDSCAN_H

// What `eod info` says of one record file: the library's scan of it (frames, damage, the
// frame ledger) and the records counted per object id.

#include <cstdint>
#include <istream>
#include <map>
#include <string>

#include <eod/io/frameledger.h>

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
    tq::eod::io::FrameLedger ledger;
    // Top-level records that are not frames, and the sub-records of frames, by object id.
    // Empty when the counts came from an index file, which holds frames, not records.
    std::map<int, IdStats> by_id;
    bool from_index = false;
};

// Library errors come out as ToolError naming the path.
FileScan scanRecordFile(const std::string& path);
// The same for `size` bytes of a stream, which is read once from front to back.
FileScan scanRecordStream(std::istream& in, std::uint64_t size, const std::string& path);

// The class registered for an object id, without its namespace ("HeadOutputDataV2"),
// or "unknown".
std::string objectName(int object_id);

}  // namespace eodtool

#endif
