#include "logrecords.h"

#include <eod/io/index/logscan.h>

#include "toolerror.h"

namespace eodtool {

std::vector<RecordRef> readRecordRefs(const std::string& log_path) {
    tq::eod::io::LogScanner scanner(log_path);
    std::vector<RecordRef> refs;
    tq::eod::io::LogIndexEntry entry;
    std::vector<unsigned char> bytes;
    while (scanner.next(entry, bytes)) refs.push_back({entry.frame_num, entry.offset, bytes.size()});
    if (!scanner.damage().empty()) {
        const tq::eod::io::LogDamage& d = scanner.damage().front();
        throw ToolError(log_path + ": " +
                        (d.kind == tq::eod::io::LogDamage::TORN_TAIL
                             ? "truncated: the file ends inside a record at byte "
                             : "corrupt record at byte ") +
                        std::to_string(d.offset) + "; repair it with eod recover first");
    }
    return refs;
}

std::vector<unsigned char> readRecord(std::ifstream& log, const std::string& log_path,
                                      const RecordRef& ref) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(ref.size));
    log.clear();
    log.seekg(static_cast<std::streamoff>(ref.offset));
    if (!log.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()))) {
        throw ToolError(log_path + ": cannot read the record at byte " + std::to_string(ref.offset));
    }
    return bytes;
}

LogCopy::LogCopy(const std::string& out_log)
    : _path(out_log), _out(out_log, std::ios_base::out | std::ios_base::binary | std::ios_base::trunc) {
    if (!_out) throw ToolError(out_log + ": cannot write file");
    _index.open(out_log);
}

void LogCopy::append(unsigned int frame_num, const std::vector<unsigned char>& record) {
    if (!_out.write(reinterpret_cast<const char*>(record.data()), static_cast<std::streamsize>(record.size()))) {
        throw ToolError(_path + ": cannot write file");
    }
    _index.add(frame_num, record.size());
}

void LogCopy::close() {
    _out.close();
    if (_out.fail()) throw ToolError(_path + ": cannot write file");
    _index.close();
}

}  // namespace eodtool
