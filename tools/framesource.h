#ifndef EOD_TOOLS_FRAMESOURCE_H
#define EOD_TOOLS_FRAMESOURCE_H

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>

namespace eodtool {

// Frames one after another, from a recording or from the synthetic engine.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    // The next frame, or null when the source is exhausted.
    virtual boost::shared_ptr<tq::eod::EngineOutputData> next() = 0;
};

// A log directory (merged by frame number), a log file or a raw record file of frames.
// Library errors come out as ToolError naming the path.
std::unique_ptr<FrameSource> openRecording(const std::string& path);

// The frames a command works on: frame numbers first..last, both included.
struct FrameRange {
    unsigned int first = 0;
    unsigned int last = std::numeric_limits<unsigned int>::max();
    bool contains(unsigned int frame_num) const { return frame_num >= first && frame_num <= last; }
};

// "A:B" with whole numbers A <= B, either end may be left out; empty: every frame. Nothing
// for any other text.
std::optional<FrameRange> parseFrameRange(const std::string& text);

// The next frame of `source` that lies in `range` and, when ids are listed, still holds a
// record after keeping only those (utils::keepObjectIDs); null at the end of the source.
boost::shared_ptr<tq::eod::EngineOutputData> nextSelected(FrameSource& source,
                                                          const FrameRange& range,
                                                          const std::vector<char>& ids);

}  // namespace eodtool

#endif
