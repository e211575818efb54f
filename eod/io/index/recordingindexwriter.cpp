#include <eod/io/index/recordingindexwriter.h>

#include <eod/io/engineoutputdatafilewriter.h>

#include "eod/io/detail/loggedsubobjects.h"
#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

RecordingIndexWriter::RecordingIndexWriter() = default;

RecordingIndexWriter::~RecordingIndexWriter() = default;

void RecordingIndexWriter::newFiles(const std::vector<char>& ids, const std::string& directory,
                                    const std::string& suffix) {
    EOD_REQUIRE(!ids.empty(), "the list of object IDs to log cannot be empty");
    // The log writer's names: no "/" after a directory that ends in one, or is empty.
    std::string prefix = directory;
    if (!prefix.empty() && prefix.back() != '/' && prefix.back() != '\\') prefix += '/';
    for (char id : ids) {
        newFile(id, prefix + detail::narrowPath(EngineOutputDataFileWriter::objectIDToFileName(id)) +
                        suffix + detail::narrowPath(EngineOutputData::LOGFILE_EXTENSION()));
    }
}

void RecordingIndexWriter::newFile(char id, const std::string& log_path) {
    EOD_REQUIRE(_indexes.count(id) == 0, "index of this object ID already open");
    auto index = std::make_unique<LogIndexWriter>();
    index->open(log_path);
    _indexes[id] = std::move(index);
}

void RecordingIndexWriter::writeData(const EngineOutputData& frame) {
    if (!frame.serializeEnabled()) return;
    detail::LoggedSubObjects subs(frame);
    for (const auto& entry : _indexes) {
        const Serializable* sub = subs.find(entry.first);
        if (!sub || !sub->serializeEnabled()) continue;
        struct Release {
            EngineOutputData& wrapper;
            ~Release() { wrapper.clearSubObjects(); }
        } release{_wrapper};
        _wrapper.setFrameNum(frame.frameNum());
        _wrapper.addSubObject(boost::shared_ptr<Serializable>(boost::shared_ptr<Serializable>(),
                                                              const_cast<Serializable*>(sub)));
        entry.second->add(frame.frameNum(), _wrapper.numTotalBytes());
    }
}

void RecordingIndexWriter::flush() {
    for (auto& entry : _indexes) entry.second->flush();
}

void RecordingIndexWriter::closeFiles() {
    for (auto& entry : _indexes) entry.second->close();
    _indexes.clear();
}

}  // namespace io
}  // namespace eod
}  // namespace tq
