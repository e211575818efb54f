#ifndef EOD_TOOLS_RECORDSCAN_H
#define EOD_TOOLS_RECORDSCAN_H

// Walks a raw record file or a log file record by record, without merging, and counts
// what it finds: frames, sub-records per object id, and everything the frame ledger
// reports.

#include <cstdint>
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

FileScan scanRecordFile(const std::string& path);

// The class registered for an object id, without its namespace ("HeadOutputDataV2"),
// or "unknown".
std::string objectName(int object_id);

}  // namespace eodtool

#endif
