#ifndef EOD_UTILS_FRAMESELECTION_H
#define EOD_UTILS_FRAMESELECTION_H

// Keeping the records of chosen object ids in a frame. An id names a record type wherever
// the frame keeps it: at the top of the frame, or inside its face sets (id 94), where head,
// face and eye records live. This is the meaning the log writer gives to its list of ids,
// which looks in the face set for an id missing at the top.

#include <vector>

#include <eod/engineoutputdata.h>

namespace tq {
namespace eod {
namespace utils {

// Removes every sub-record of the frame whose id is not listed; a face set that is not
// itself listed keeps only its listed records and goes when none is left, so the faces
// that remain keep their order. An empty list keeps everything. Returns whether the frame
// still holds a record.
bool keepObjectIDs(EngineOutputData& frame, const std::vector<char>& ids);

}  // namespace utils
}  // namespace eod
}  // namespace tq

#endif
