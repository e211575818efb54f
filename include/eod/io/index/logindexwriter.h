#ifndef EOD_IO_INDEX_LOGINDEXWRITER_H
#define EOD_IO_INDEX_LOGINDEXWRITER_H

// Writes the index X.itql of a log X.tql while the log is written (docs/index-files.md).
// The caller tells it, record by record, the frame number and the size in bytes of what it
// appended to the log. flush() and close() write the header so that it counts the records
// already in the log file on disk: call them after flushing or closing the log, or the index
// covers less of it (a reader scans the rest).

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class LogIndexWriter {
  public:
    LogIndexWriter() = default;
    // Closes; errors are swallowed here, call close() to see them.
    ~LogIndexWriter();

    LogIndexWriter(const LogIndexWriter&) = delete;
    LogIndexWriter& operator=(const LogIndexWriter&) = delete;

    // Starts the index of the log at log_path, replacing any index file beside it; the log
    // starts empty. Usage error "index already open"; EngineOutputDataFileError
    // "LogIndexWriter - could not write file <index path>".
    void open(const std::string& log_path);
    bool isOpen() const { return _index.is_open(); }
    const std::string& logPath() const { return _log_path; }

    // The log's next record. Usage error "index not open".
    void add(unsigned int frame_num, std::uint64_t record_bytes);
    // Writes the entries and a header that counts those whose records are on disk.
    void flush();
    void close();

  private:
    void writeHeader(std::uint32_t edge_crc);
    [[noreturn]] void fail();

    std::string _log_path;
    std::string _index_path;
    std::fstream _index;
    std::uint64_t _log_end = 0;
    // Entries written to the file but not yet counted by its header, with their records' ends.
    struct Pending {
        unsigned char bytes[12];
        unsigned int frame_num;
        std::uint64_t end;
    };
    std::vector<Pending> _pending;
    std::size_t _pending_first = 0;
    std::uint64_t _count = 0;
    std::uint64_t _covered = 0;
    std::uint32_t _entries_crc = 0;
    bool _monotonic = true;
    bool _has_last = false;
    unsigned int _last_frame = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
