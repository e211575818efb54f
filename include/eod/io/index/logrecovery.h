#ifndef EOD_IO_INDEX_LOGRECOVERY_H
#define EOD_IO_INDEX_LOGRECOVERY_H

// Repairs a log file by copying: every good record of the source log (see LogScanner) is
// written, byte for byte and in its order, to a new log, with a fresh index beside it; torn
// tails and corrupt records are left out and listed. The source is only read.

#include <cstdint>
#include <string>
#include <vector>

#include <eod/io/index/logscan.h>

namespace tq {
namespace eod {
namespace io {

struct LogRecovery {
    std::uint64_t records_kept = 0;
    std::uint64_t bytes_kept = 0;
    std::vector<LogDamage> dropped;
};

// Writes out_log (replacing it) and its index. EngineOutputDataFileError "LogScanner - could
// not open file <in_log>", "recoverLog - could not write file <out_log>" and the errors of
// LogIndexWriter.
LogRecovery recoverLog(const std::string& in_log, const std::string& out_log);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
