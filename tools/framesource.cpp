#include "framesource.h"

#include <filesystem>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilereader.h>

#include "toolerror.h"

namespace eodtool {

namespace {

class RecordingSource : public FrameSource {
public:
    explicit RecordingSource(const std::string& path) : _path(path) {
        std::error_code ec;
        if (!std::filesystem::exists(path, ec)) throw ToolError(path + ": no such file or directory");
        try {
            if (std::filesystem::is_directory(path, ec)) {
                _reader.openFiles(path);
            } else if (!std::filesystem::is_regular_file(path, ec)) {
                // A FIFO or a device would block the reader or never end.
                throw ToolError(path + ": not a regular file");
            } else {
                _reader.openFile(path);
            }
        } catch (const tq::eod::EODError& e) {
            throw ToolError(path + ": " + e.what());
        }
    }

    boost::shared_ptr<tq::eod::EngineOutputData> next() override {
        try {
            return _reader.readData();
        } catch (const tq::eod::EODError& e) {
            throw ToolError(_path + ": " + e.what());
        }
    }

private:
    std::string _path;
    tq::eod::io::EngineOutputDataFileReader _reader;
};

}  // namespace

std::unique_ptr<FrameSource> openRecording(const std::string& path) {
    return std::unique_ptr<FrameSource>(new RecordingSource(path));
}

}  // namespace eodtool
