#ifndef EOD_IO_INDEX_LOGINDEX_H
#define EOD_IO_INDEX_LOGINDEX_H

// The index of one log file: for every good record, in file order, its frame number and byte
// offset. It comes from the index file X.itql beside the log X.tql as far as that file checks
// out against the log (docs/index-files.md), and from a scan of the log otherwise: a missing,
// stale, truncated or damaged index costs time, never a frame. Entries of an index file are
// read from it when asked for, so opening the index of a long log reads only its header.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <eod/io/index/logindexentry.h>

namespace tq {
namespace eod {
namespace io {

// The index path of a log: X.itql for X.tql (the extension appended to other names).
std::string logIndexPath(const std::string& log_path);

class LogIndex {
  public:
    enum class Origin {
        INDEX_FILE,           // every entry from the index file
        INDEX_FILE_AND_SCAN,  // the index file covers the log's start, a scan the rest
        SCAN,                 // the index file was missing or not believed
    };

    // The index of the log at log_path. EngineOutputDataFileError "LogScanner - could not
    // open file <path>" when the log cannot be read.
    static LogIndex open(const std::string& log_path);
    // As open(), and every entry of the index file is checked as well (its CRC, offsets
    // from 0 upwards, the monotonic flag): for callers that use all entries.
    static LogIndex openVerified(const std::string& log_path);
    // Ignores any index file: a scan of the whole log.
    static LogIndex scan(const std::string& log_path);

    std::size_t size() const { return static_cast<std::size_t>(_file_count) + _memory.size(); }
    // Entry i < size(). EngineOutputDataFileError when the index file can no longer be read.
    LogIndexEntry entry(std::size_t i) const;
    std::vector<LogIndexEntry> entries() const;
    // Frame numbers never decrease from entry to entry.
    bool monotonic() const { return _monotonic; }
    std::uint64_t logSize() const { return _log_size; }
    // Where the last entry's record ends (0 without entries).
    std::uint64_t recordsEnd() const { return _memory.empty() ? _file_end : _memory_end; }
    Origin origin() const { return _origin; }
    const std::string& logPath() const { return _log_path; }

    // The first entry whose frame number is not below frame_num, by binary search; size()
    // when there is none. Meaningful for monotonic indexes only.
    std::size_t lowerBound(unsigned int frame_num) const;
    // Whether the log confirms entry i: the record at its offset is a frame record of its
    // frame number that ends where the next entry starts (or at the end of what the index
    // covers). Reads only the record's first bytes.
    bool confirms(std::size_t i) const;

  private:
    struct File;
    explicit LogIndex(const std::string& log_path);
    static LogIndex fromFile(const std::string& log_path, bool verify_entries);
    bool believeIndexFile();
    bool verifyFileEntries();
    void scanFrom(std::uint64_t offset);

    std::string _log_path;
    std::uint64_t _log_size = 0;
    bool _monotonic = true;
    Origin _origin = Origin::SCAN;
    // Entries read from the index file on demand, then those held in memory.
    std::shared_ptr<File> _file;
    std::uint64_t _file_count = 0;
    std::uint32_t _entries_crc = 0;
    std::vector<LogIndexEntry> _memory;
    // Where the records of the entries end: the covered size of the index file's part and
    // the end of the last good record found by a scan.
    std::uint64_t _file_end = 0;
    std::uint64_t _memory_end = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
