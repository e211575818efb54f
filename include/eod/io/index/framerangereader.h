#ifndef EOD_IO_INDEX_FRAMERANGEREADER_H
#define EOD_IO_INDEX_FRAMERANGEREADER_H

// Reads the frames of a recording (a log directory or one log file) whose frame numbers lie
// in a range, and only as much of the logs as the range needs. It returns the frames that
// EngineOutputDataFileReader's full merge returns within the range, in the same order and
// with their sub-objects in the same order.
//
// How: each log's index (LogIndex: the index file as far as it checks out, a scan
// otherwise) is searched for the first record at or after the range's first frame number,
// that record and the one before it are checked against the log, and the logs are merged
// from there until every log has passed the range's last frame number. When some log's
// frame numbers ever decrease, a range cannot be found by search: the whole recording is
// merged by EngineOutputDataFileReader and the frames outside the range are dropped.
//
// Damage: a bad record met inside the range raises EngineOutputDataFileError
// "FrameRangeReader::readData() - corrupt or invalid logfile: <path>" when it is read, and
// reading goes on after it on the next call; with setTornTailsLast(true) a torn tail is
// reported only once the other logs are used up. Both as EngineOutputDataFileReader does it.

#include <cstdint>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>
#include <eod/io/engineoutputdatafilereader.h>

namespace tq {
namespace eod {
namespace io {

// The log files of a recording in the order every reader merges them: for a directory the
// log files EngineOutputDataFileReader::listLogFiles finds (entries passed over are added to
// `skipped` when given), for a file the file. Its errors, and EngineOutputDataFileError
// "<path>: no log files" for a directory without any.
std::vector<std::string> recordingLogFiles(const std::string& path,
                                           std::vector<std::string>* skipped = nullptr);

class FrameRangeReader {
  public:
    FrameRangeReader();
    ~FrameRangeReader();

    FrameRangeReader(const FrameRangeReader&) = delete;
    FrameRangeReader& operator=(const FrameRangeReader&) = delete;

    // A log directory or a log file. Usage error "files already open"; the errors of
    // recordingLogFiles and of opening a log.
    void open(const std::string& path);
    // Frames first..last, both included; by default every frame. Usage errors "range set
    // after reading began", "first > last".
    void setRange(unsigned int first, unsigned int last);
    // As EngineOutputDataFileReader::setTornTailsLast; off by default. Usage error "option
    // set after reading began".
    void setTornTailsLast(bool last);

    // The next frame of the range, null when there is none left.
    boost::shared_ptr<EngineOutputData> readData();

    // After the first readData: whether the logs were searched (true) or merged whole.
    bool searched() const { return _mode == Mode::SEARCH; }
    void close();

  private:
    class Stream;
    enum class Mode { CLOSED, OPEN, SEARCH, MERGE_ALL };
    void start();
    bool startSearch();
    boost::shared_ptr<EngineOutputData> readSearched();

    std::string _path;
    std::vector<std::string> _logs;
    unsigned int _first = 0;
    unsigned int _last = std::numeric_limits<unsigned int>::max();
    bool _torn_tails_last = false;
    Mode _mode = Mode::CLOSED;
    std::vector<std::unique_ptr<Stream>> _streams;
    EngineOutputDataFileReader _all;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
