#include "eod/utils/frameselection.h"

#include <algorithm>

#include <eod/facesetoutputdata.h>

namespace tq {
namespace eod {
namespace utils {

namespace {

bool listed(const std::vector<char>& ids, char id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

bool keepObjectIDs(EngineOutputData& frame, const std::vector<char>& ids) {
    if (ids.empty()) return frame.numSubObjects() > 0;
    for (const auto& sub : frame.subObjects()) {
        if (listed(ids, sub->objectID())) continue;
        const auto face_set = boost::dynamic_pointer_cast<FaceSetOutputData>(sub);
        if (face_set) {
            for (const auto& record : face_set->subObjects()) {
                if (!listed(ids, record->objectID())) face_set->removeSubObject(*record);
            }
            if (face_set->numSubObjects() > 0) continue;
        }
        frame.removeSubObject(*sub);
    }
    return frame.numSubObjects() > 0;
}

}  // namespace utils
}  // namespace eod
}  // namespace tq
