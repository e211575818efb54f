// `eod cat PATH [--ids LIST] [--frames A:B]`: merged frames in the library's column form,
// a header line and then one tab-separated line per frame.

#include <algorithm>
#include <iostream>
#include <limits>

#include "commands.h"
#include "framesource.h"
#include "toolerror.h"

namespace eodtool {

namespace {

struct FrameRange {
    unsigned int first = 0;
    unsigned int last = std::numeric_limits<unsigned int>::max();
};

FrameRange parseRange(const std::string& text) {
    FrameRange range;
    if (text.empty()) return range;
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos) throw ToolError("--frames: expected A:B, got '" + text + "'");
    try {
        if (colon > 0) range.first = static_cast<unsigned int>(std::stoul(text.substr(0, colon)));
        if (colon + 1 < text.size()) {
            range.last = static_cast<unsigned int>(std::stoul(text.substr(colon + 1)));
        }
    } catch (const std::exception&) {
        throw ToolError("--frames: expected A:B, got '" + text + "'");
    }
    return range;
}

// Keeps only the sub-records of the listed ids; false when none is left.
bool keepIds(tq::eod::EngineOutputData& frame, const std::vector<int>& ids) {
    if (ids.empty()) return true;
    for (const auto& sub : frame.subObjects()) {
        if (std::find(ids.begin(), ids.end(), sub->objectID()) == ids.end()) {
            frame.removeSubObject(*sub);
        }
    }
    return frame.numSubObjects() > 0;
}

}  // namespace

int runCat(const CatOptions& options) {
    const FrameRange range = parseRange(options.frames);
    std::unique_ptr<FrameSource> source = openRecording(options.path);
    bool header_written = false;
    while (boost::shared_ptr<tq::eod::EngineOutputData> frame = source->next()) {
        if (frame->frameNum() < range.first || frame->frameNum() > range.last) continue;
        if (!keepIds(*frame, options.ids)) continue;
        if (!header_written) {
            frame->printHeader(std::cout);
            std::cout << '\n';
            header_written = true;
        }
        std::cout << *frame << '\n';
    }
    return 0;
}

}  // namespace eodtool
