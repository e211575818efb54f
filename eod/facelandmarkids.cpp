#include <eod/facelandmarkids.h>

namespace tq {
namespace eod {

const std::vector<int>& FLM_IDS_REFERENCE() {
    static const std::vector<int> ids = {0, 1, 2, 3, 4, 5, 6, 7};
    return ids;
}

const std::vector<int>& FLM_IDS_EYE_CORNERS() {
    static const std::vector<int> ids = {0, 1, 2, 3};
    return ids;
}

const std::vector<int>& FLM_IDS_OUTER_LIP() {
    static const std::vector<int> ids = {4, 100, 101, 102, 5, 103, 104, 105};
    return ids;
}

const std::vector<int>& FLM_IDS_INNER_LIP() {
    static const std::vector<int> ids = {200, 201, 202, 203, 204, 205, 206, 207};
    return ids;
}

const std::vector<int>& FLM_IDS_LIPS() {
    static const std::vector<int> ids = [] {
        std::vector<int> lips = FLM_IDS_OUTER_LIP();
        lips.insert(lips.end(), FLM_IDS_INNER_LIP().begin(), FLM_IDS_INNER_LIP().end());
        return lips;
    }();
    return ids;
}

const std::vector<int>& FLM_IDS_NOSE() {
    static const std::vector<int> ids = {6, 7, 500, 501, 502, 503};
    return ids;
}

const std::vector<int>& FLM_IDS_RIGHT_EYE() {
    static const std::vector<int> ids = {600, 601, 602};
    return ids;
}

const std::vector<int>& FLM_IDS_LEFT_EYE() {
    static const std::vector<int> ids = {700, 701, 702};
    return ids;
}

const std::vector<int>& FLM_IDS_RIGHT_EYEBROW() {
    static const std::vector<int> ids = {300, 301, 302};
    return ids;
}

const std::vector<int>& FLM_IDS_LEFT_EYEBROW() {
    static const std::vector<int> ids = {400, 401, 402};
    return ids;
}

const std::vector<int>& FLM_IDS_ALL_FIXED() {
    static const std::vector<int> ids = {
        0,   1,   2,   3,   4,   5,   6,   7,                      // reference
        100, 101, 102, 103, 104, 105,                            // outer lip
        200, 201, 202, 203, 204, 205, 206, 207,                  // inner lip
        700, 701, 702, 600, 601, 602, 400, 401, 402, 300, 301, 302,  // eyes, eyebrows
        500, 501, 502, 503};                                     // nose
    return ids;
}

}  // namespace eod
}  // namespace tq
