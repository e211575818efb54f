#ifndef EOD_TOOLS_FRAMESOURCE_H
#define EOD_TOOLS_FRAMESOURCE_H

#include <memory>
#include <string>

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

}  // namespace eodtool

#endif
