#ifndef EOD_TOOLS_FRAMESOURCE_H
#define EOD_TOOLS_FRAMESOURCE_H

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>
#include <eod/eoderror.h>

#include "toolerror.h"

namespace eodtool {

// Frames one after another, from a recording or from the synthetic engine.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    // The next frame, or null when the source is exhausted.
    virtual boost::shared_ptr<tq::eod::EngineOutputData> next() = 0;
};

// Throws ToolError unless `path` names a directory or a regular file.
void requireRecordingPath(const std::string& path);
// A library error met while reading the recording at `path`, as the command reports it.
ToolError readError(const std::string& path, const tq::eod::EODError& e);

// The frames a command works on: frame numbers first..last, both included.
struct FrameRange {
    unsigned int first = 0;
    unsigned int last = std::numeric_limits<unsigned int>::max();
    bool contains(unsigned int frame_num) const { return frame_num >= first && frame_num <= last; }
};

// A log directory (merged by frame number), a log file, a raw record file or a container.
// Library errors come out as ToolError naming the path. With `upgrade`, each frame is
// brought to the current layout (tq::eod::upgrade) before it is handed out. Only the frames
// of `range` are read where index files allow; others may still come out.
std::unique_ptr<FrameSource> openRecording(const std::string& path, bool upgrade = false,
                                           const FrameRange& range = FrameRange());

// "A:B" with whole numbers A <= B, either end may be left out; empty: every frame. Nothing
// for any other text.
std::optional<FrameRange> parseFrameRange(const std::string& text);

// The frames whose timing record lies T0..T1 seconds (both included) after the recording's
// first timing record; without `given`, every frame.
struct TimeRange {
    bool given = false;
    double first = 0;
    double last = 1e300;
    bool contains(double seconds) const { return seconds >= first && seconds <= last; }
};

// "T0:T1" in seconds with 0 <= T0 <= T1, either end may be left out; empty: every frame.
// Nothing for any other text.
std::optional<TimeRange> parseTimeRange(const std::string& text);

// The experiment time of the first frame of the recording that holds a timing record, the
// zero of TimeRange. ToolError when no frame holds one.
double firstExperimentTime(const std::string& path);

// `range` narrowed to the frames of `times`, as far as the recording's index can tell
// without reading it; the frames still have to be tested against `times` one by one.
FrameRange seekTimeRange(const std::string& path, const TimeRange& times, FrameRange range);

// Whether the frame lies in `range` and, when ids are listed, still holds a record after
// keeping only those (utils::keepObjectIDs, which changes the frame).
bool isSelected(tq::eod::EngineOutputData& frame, const FrameRange& range,
                const std::vector<char>& ids);
// The next frame of `source` that isSelected; null at the end of the source.
boost::shared_ptr<tq::eod::EngineOutputData> nextSelected(FrameSource& source,
                                                          const FrameRange& range,
                                                          const std::vector<char>& ids);

}  // namespace eodtool

#endif
