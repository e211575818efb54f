#ifndef EOD_IO_INDEX_LOGSCAN_H
#define EOD_IO_INDEX_LOGSCAN_H

// Walks a log file record by record from a byte offset, without merging, and tells the good
// records (complete EngineOutputData records that decode) from the damage between them: a
// torn tail (the file ends inside a record) and corrupt records (complete by the size in their
// header but not decodable as a frame, skipped by that size as every reader skips them). Each
// good record comes with its bytes as they stand in the file, so that a caller can index it
// or copy it unchanged.
//
// Memory: one record at a time; a record is read only when the bytes its header announces
// are in the file, so a lying size costs nothing.

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include <eod/io/index/logindexentry.h>

namespace tq {
namespace eod {
namespace io {

struct LogDamage {
    enum Kind { TORN_TAIL, CORRUPT_RECORD };
    Kind kind = CORRUPT_RECORD;
    std::uint64_t offset = 0;  // where the dropped bytes start
    std::uint64_t bytes = 0;   // how many bytes were dropped
    bool frame_known = false;  // whether the bytes still hold a frame number
    unsigned int frame_num = 0;
};

class LogScanner {
  public:
    // EngineOutputDataFileError "LogScanner - could not open file <path>".
    explicit LogScanner(const std::string& log_path, std::uint64_t from = 0);

    // The next good record: its entry and, in `bytes`, the record as it stands. False at the
    // end of the file; damage passed over on the way is added to damage().
    bool next(LogIndexEntry& entry, std::vector<unsigned char>& bytes);

    const std::vector<LogDamage>& damage() const { return _damage; }
    std::uint64_t fileSize() const { return _size; }
    const std::string& path() const { return _path; }

  private:
    std::string _path;
    std::ifstream _in;
    std::uint64_t _size = 0;
    std::uint64_t _pos = 0;
    std::vector<LogDamage> _damage;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
