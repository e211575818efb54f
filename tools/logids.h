#ifndef EOD_TOOLS_LOGIDS_H
#define EOD_TOOLS_LOGIDS_H

#include <vector>

#include <eod/engineoutputdata.h>

namespace eodtool {

const int kLogBufferSize = 1 << 16;

// Gives the face set (id 94) a log file name of its own, so that a recording keeps each
// face's head, face and eye records together and replays frames exactly as they were.
void registerToolLogNames();

// The object ids of a frame's sub-records that have a log file name, in ascending order.
std::vector<char> loggedIdsOf(const tq::eod::EngineOutputData& frame);

}  // namespace eodtool

#endif
