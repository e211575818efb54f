#include "framesource.h"

#include <cctype>
#include <filesystem>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/utils/frameselection.h>

#include "toolerror.h"

namespace eodtool {

namespace {

// A frame number in decimal digits, nothing else (no sign, no wrap-around).
bool parseFrameNum(const std::string& text, unsigned int& value) {
    if (text.empty() || text.size() > 10) return false;
    unsigned long long n = 0;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
        n = n * 10 + static_cast<unsigned>(c - '0');
    }
    if (n > std::numeric_limits<unsigned int>::max()) return false;
    value = static_cast<unsigned int>(n);
    return true;
}

class RecordingSource : public FrameSource {
public:
    explicit RecordingSource(const std::string& path) : _path(path) {
        std::error_code ec;
        if (!std::filesystem::exists(path, ec)) throw ToolError(path + ": no such file or directory");
        try {
            // A log cut short by a crash is reported after every other log has given all
            // its frames, so no readable frame is held back by another file's torn tail.
            _reader.setTornTailsLast(true);
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
        } catch (const tq::eod::io::EngineOutputDataFileError& e) {
            // The log that failed, not only the directory.
            throw ToolError((e.path().empty() ? _path : e.path()) + ": " + e.what());
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

std::optional<FrameRange> parseFrameRange(const std::string& text) {
    FrameRange range;
    if (text.empty()) return range;
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos) return std::nullopt;
    const std::string first = text.substr(0, colon), last = text.substr(colon + 1);
    if (!first.empty() && !parseFrameNum(first, range.first)) return std::nullopt;
    if (!last.empty() && !parseFrameNum(last, range.last)) return std::nullopt;
    if (range.first > range.last) return std::nullopt;
    return range;
}

boost::shared_ptr<tq::eod::EngineOutputData> nextSelected(FrameSource& source,
                                                          const FrameRange& range,
                                                          const std::vector<char>& ids) {
    while (boost::shared_ptr<tq::eod::EngineOutputData> frame = source.next()) {
        if (range.contains(frame->frameNum()) &&
            (ids.empty() || tq::eod::utils::keepObjectIDs(*frame, ids))) {
            return frame;
        }
    }
    return nullptr;
}

}  // namespace eodtool
