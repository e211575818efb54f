#include <eod/io/index/logrecovery.h>

#include <fstream>

#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/index/logindexwriter.h>

namespace tq {
namespace eod {
namespace io {

LogRecovery recoverLog(const std::string& in_log, const std::string& out_log) {
    LogScanner scanner(in_log);
    std::ofstream out(out_log, std::ios_base::out | std::ios_base::binary | std::ios_base::trunc);
    if (!out) throw EngineOutputDataFileError("recoverLog - could not write file " + out_log);
    LogIndexWriter index;
    index.open(out_log);
    LogRecovery result;
    LogIndexEntry entry;
    std::vector<unsigned char> bytes;
    while (scanner.next(entry, bytes)) {
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        index.add(entry.frame_num, bytes.size());
        ++result.records_kept;
        result.bytes_kept += bytes.size();
    }
    out.close();
    if (out.fail()) throw EngineOutputDataFileError("recoverLog - could not write file " + out_log);
    index.close();
    result.dropped = scanner.damage();
    return result;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
