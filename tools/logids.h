#ifndef EOD_TOOLS_LOGIDS_H
#define EOD_TOOLS_LOGIDS_H

#include <string>
#include <utility>
#include <vector>

#include <eod/engineoutputdata.h>

namespace eodtool {

const int kLogBufferSize = 1 << 16;

// Gives the face set (id 94) a log file name of its own, so that a recording keeps each
// face's head, face and eye records together and replays frames exactly as they were.
void registerToolLogNames();

// The object ids of a frame's sub-records that have a log file name, in ascending order.
std::vector<char> loggedIdsOf(const tq::eod::EngineOutputData& frame);

// Every object id that has a log file name, with that name, in ascending id order: the ids
// that --ids accepts.
std::vector<std::pair<int, std::string>> logNames();

// The check of one --ids element, shared by every command that takes --ids: empty when the
// text is an object id with a log file name, else the reason it is not.
std::string checkLoggedId(const std::string& text);

}  // namespace eodtool

#endif
