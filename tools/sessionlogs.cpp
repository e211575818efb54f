#include "sessionlogs.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "logids.h"
#include "toolerror.h"

namespace eodtool {

using tq::eod::io::EngineOutputDataFileWriter;

SessionLogs::SessionLogs(std::string directory, bool fsync)
    : _directory(std::move(directory)), _fsync(fsync) {}

void SessionLogs::open(const std::vector<char>& ids) {
    for (char id : ids) openLog(id);
}

void SessionLogs::write(const tq::eod::EngineOutputData& frame, bool open_new) {
    if (open_new) {
        for (char id : loggedIdsOf(frame)) {
            if (_writers.count(id) == 0) openLog(id);
        }
    }
    for (auto& entry : _writers) entry.second->writeData(frame);
    _indexes.writeData(frame);
}

void SessionLogs::flush() {
    for (auto& entry : _writers) entry.second->flush();
    _indexes.flush();
    if (!_fsync) return;
    for (const std::string& file : _files) syncToDisk(file);
    // A new file's name lives in the directory: without this a power cut may lose the
    // whole file although its bytes are on the disk.
    if (_new_files) syncToDisk(_directory);
    _new_files = false;
}

void SessionLogs::close() {
    for (auto& entry : _writers) entry.second->closeFiles();
    _writers.clear();
    _indexes.closeFiles();
}

void SessionLogs::openLog(char id) {
    auto writer = std::make_unique<EngineOutputDataFileWriter>();
    writer->newFiles({id}, _directory, "", kLogBufferSize);
    _writers[id] = std::move(writer);
    const std::filesystem::path name(EngineOutputDataFileWriter::objectIDToFileName(id) +
                                     tq::eod::EngineOutputData::LOGFILE_EXTENSION());
    _files.push_back((std::filesystem::path(_directory) / name).string());
    _indexes.newFile(id, _files.back());
    _new_files = true;
}

void SessionLogs::syncToDisk(const std::string& path) const {
    const int fd = ::open(path.c_str(), O_RDONLY);
    const bool ok = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0) ::close(fd);
    if (!ok) throw ToolError(path + ": fsync failed");
}

}  // namespace eodtool
