#ifndef EOD_FACELANDMARKIDS_H
#define EOD_FACELANDMARKIDS_H

// The fixed lists of face landmark ids. Each list is built on the first call and lives
// until the process ends. Ids 4 and 5 (lip corners) and 6 and 7 (nostrils) are in the
// reference list and in the lip or nose list alike.

#include <vector>

namespace tq {
namespace eod {

// Ids 800..899 belong to the face-texture mask, never to a face landmark.
const int FLM_MASK_ID_FIRST = 800;
const int FLM_MASK_ID_LAST = 899;

// 0..7
const std::vector<int>& FLM_IDS_REFERENCE();
// 0, 1, 2, 3
const std::vector<int>& FLM_IDS_EYE_CORNERS();
// 4, 100, 101, 102, 5, 103, 104, 105
const std::vector<int>& FLM_IDS_OUTER_LIP();
// 200..207
const std::vector<int>& FLM_IDS_INNER_LIP();
// The outer-lip list followed by the inner-lip list.
const std::vector<int>& FLM_IDS_LIPS();
// 6, 7, 500..503
const std::vector<int>& FLM_IDS_NOSE();
// 600, 601, 602
const std::vector<int>& FLM_IDS_RIGHT_EYE();
// 700, 701, 702
const std::vector<int>& FLM_IDS_LEFT_EYE();
// 300, 301, 302
const std::vector<int>& FLM_IDS_RIGHT_EYEBROW();
// 400, 401, 402
const std::vector<int>& FLM_IDS_LEFT_EYEBROW();
// 0..7, 100..105, 200..207, 700..702, 600..602, 400..402, 300..302, 500..503 (38 ids, in
// this order): the columns of the face records' text output.
const std::vector<int>& FLM_IDS_ALL_FIXED();

}  // namespace eod
}  // namespace tq

#endif
