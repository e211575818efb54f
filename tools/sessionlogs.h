#ifndef EOD_TOOLS_SESSIONLOGS_H
#define EOD_TOOLS_SESSIONLOGS_H

// The log files of one recording session in one directory. A log is opened when the first
// frame that holds its record type is written (or up front for a fixed list of ids), so a
// record type that appears late in a session is logged like any other. flush() hands every
// buffered byte to the operating system and, with fsync, to the disk. Each log gets its
// index file (X.itql) beside it, flushed and closed after the log.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <eod/engineoutputdata.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/index/recordingindexwriter.h>

namespace eodtool {

class SessionLogs {
public:
    SessionLogs(std::string directory, bool fsync);

    // Opens the logs of these ids now, before any frame.
    void open(const std::vector<char>& ids);
    // Writes the frame to every open log; with `open_new`, first opens a log for every
    // logged record type of the frame that has none yet.
    void write(const tq::eod::EngineOutputData& frame, bool open_new);
    void flush();
    void close();

    // The log files opened, in the order they were opened.
    const std::vector<std::string>& files() const { return _files; }

private:
    void openLog(char id);
    void syncToDisk(const std::string& path) const;

    std::string _directory;
    bool _fsync;
    // One writer per log: the library's writer opens its files all at once, and a session
    // adds logs as record types appear.
    std::map<char, std::unique_ptr<tq::eod::io::EngineOutputDataFileWriter>> _writers;
    tq::eod::io::RecordingIndexWriter _indexes;
    std::vector<std::string> _files;
    bool _new_files = false;
};

}  // namespace eodtool

#endif
