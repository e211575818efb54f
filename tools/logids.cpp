#include "logids.h"

#include <eod/facesetoutputdata.h>
#include <eod/io/engineoutputdatafilewriter.h>

namespace eodtool {

void registerToolLogNames() {
    tq::eod::io::EngineOutputDataFileWriter::registerObjectIDFileName(
        tq::eod::FaceSetOutputData::THIS_OBJECT_ID, L"FaceSet");
}

std::vector<char> loggedIdsOf(const tq::eod::EngineOutputData& frame) {
    std::vector<char> ids;
    for (const auto& sub : frame.subObjects()) {
        const char id = sub->objectID();
        if (!ids.empty() && ids.back() == id) continue;
        try {
            tq::eod::io::EngineOutputDataFileWriter::objectIDToFileName(id);
            ids.push_back(id);
        } catch (const std::exception&) {
            // Not in the name table: this record type is not logged.
        }
    }
    return ids;
}

}  // namespace eodtool
