#include "logids.h"

#include "commands.h"

#include <cctype>
#include <iomanip>
#include <iostream>

#include <eod/facesetoutputdata.h>
#include <eod/io/engineoutputdatafilewriter.h>

namespace eodtool {

using tq::eod::io::EngineOutputDataFileWriter;

namespace {

bool hasLogName(char id) { return EngineOutputDataFileWriter::hasObjectIDFileName(id); }

}  // namespace

void registerToolLogNames() {
    EngineOutputDataFileWriter::registerObjectIDFileName(tq::eod::FaceSetOutputData::THIS_OBJECT_ID,
                                                         L"FaceSet");
}

std::vector<char> loggedIdsOf(const tq::eod::EngineOutputData& frame) {
    std::vector<char> ids;
    for (const auto& sub : frame.subObjects()) {
        const char id = sub->objectID();
        if (!ids.empty() && ids.back() == id) continue;
        if (hasLogName(id)) ids.push_back(id);
    }
    return ids;
}

std::vector<std::pair<int, std::string>> logNames() {
    std::vector<std::pair<int, std::string>> names;
    for (int id = 0; id <= 127; ++id) {
        if (!hasLogName(static_cast<char>(id))) continue;
        const std::wstring name =
            EngineOutputDataFileWriter::objectIDToFileName(static_cast<char>(id));
        names.emplace_back(id, std::string(name.begin(), name.end()));
    }
    return names;
}

std::string checkLoggedId(const std::string& text) {
    bool digits = !text.empty() && text.size() <= 3;
    for (char c : text) digits = digits && std::isdigit(static_cast<unsigned char>(c));
    if (!digits || std::stoi(text) > 127) return "'" + text + "' is not an object id (0 to 127)";
    if (!hasLogName(static_cast<char>(std::stoi(text)))) {
        return "object id " + text + " has no log name (see `eod ids`)";
    }
    return std::string();
}

int runIds() {
    std::cout << "  id  log name\n";
    for (const auto& entry : logNames()) {
        std::cout << std::setw(4) << entry.first << "  " << entry.second << '\n';
    }
    return 0;
}

}  // namespace eodtool
