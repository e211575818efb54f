#ifndef EOD_IO_RECORDINGREADER_H
#define EOD_IO_RECORDINGREADER_H

// The frames of any recording the library writes, through the one reader that suits it:
// a log directory, a log file or a raw record file (FrameRangeReader: merged by frame
// number, only as much read as a frame range needs where index files allow), or a compressed
// container (DecompressingFileReader). Programs that take "a recording" (the eod command,
// log-to-text conversion) open it here and need not tell the kinds apart.
//
// Damage is reported as the underlying reader reports it: a log cut short by a crash after
// every other log has given its frames; a container's torn tail ends it quietly
// (tornTail() tells).

#include <limits>
#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>

namespace tq {
namespace eod {
namespace io {

class DecompressingFileReader;
class FrameRangeReader;

class RecordingReader {
public:
    RecordingReader();
    ~RecordingReader();
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;

    // Whether the file at path starts as a compressed container does.
    static bool isContainer(const std::string& path);

    // Frames first..last (frame numbers, both included); by default every frame. Set before
    // open.
    void setRange(unsigned int first, unsigned int last);
    // A log directory, a log file, a raw record file or a container. The readers' errors.
    void open(const std::string& path);
    // The next frame in the range, null at the end.
    boost::shared_ptr<EngineOutputData> readData();
    // A container whose last item was cut short (frames before it were read).
    bool tornTail() const;

private:
    unsigned int _first = 0;
    unsigned int _last = std::numeric_limits<unsigned int>::max();
    std::unique_ptr<FrameRangeReader> _logs;
    std::unique_ptr<DecompressingFileReader> _container;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
