#ifndef EOD_TOOLS_LOGRECORDS_H
#define EOD_TOOLS_LOGRECORDS_H

// Record-level copying between logs for the commands that build a new recording from
// others (filter, merge): the good records of a log, and a writer that appends records byte
// for byte to a new log with its index beside it.

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include <eod/io/index/logindexwriter.h>

namespace eodtool {

struct RecordRef {
    unsigned int frame_num = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// Every record of the log, in file order. A damaged log (torn tail, corrupt record) is a
// ToolError naming the file and byte offset, with the advice to recover it first: these
// commands copy what they are asked for or nothing.
std::vector<RecordRef> readRecordRefs(const std::string& log_path);

// The bytes of one record (as listed by readRecordRefs).
std::vector<unsigned char> readRecord(std::ifstream& log, const std::string& log_path,
                                      const RecordRef& ref);

class LogCopy {
  public:
    explicit LogCopy(const std::string& out_log);
    void append(unsigned int frame_num, const std::vector<unsigned char>& record);
    void close();

  private:
    std::string _path;
    std::ofstream _out;
    tq::eod::io::LogIndexWriter _index;
};

}  // namespace eodtool

#endif
