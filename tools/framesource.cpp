#include "framesource.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/index/timeseek.h>
#include <eod/io/recordingreader.h>
#include <eod/timingoutputdata.h>
#include <eod/upgrade.h>
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
    RecordingSource(const std::string& path, bool upgrade, const FrameRange& range)
        : _path(path), _upgrade(upgrade) {
        requireRecordingPath(path);
        _reader.setRange(range.first, range.last);
        try {
            _reader.open(path);
        } catch (const tq::eod::EODError& e) {
            throw readError(path, e);
        }
    }

    boost::shared_ptr<tq::eod::EngineOutputData> next() override {
        try {
            const boost::shared_ptr<tq::eod::EngineOutputData> frame = _reader.readData();
            if (frame && _upgrade) tq::eod::upgrade(*frame);
            return frame;
        } catch (const tq::eod::EODError& e) {
            throw readError(_path, e);
        }
    }

private:
    std::string _path;
    bool _upgrade;
    tq::eod::io::RecordingReader _reader;
};

}  // namespace

std::unique_ptr<FrameSource> openRecording(const std::string& path, bool upgrade,
                                           const FrameRange& range) {
    return std::unique_ptr<FrameSource>(new RecordingSource(path, upgrade, range));
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

std::optional<TimeRange> parseTimeRange(const std::string& text) {
    TimeRange range;
    if (text.empty()) return range;
    const auto seconds = [](const std::string& part, double& value) {
        std::size_t used = 0;
        try {
            value = std::stod(part, &used);
        } catch (const std::exception&) {
            return false;
        }
        return used == part.size() && value >= 0 && value <= 1e300;
    };
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos) return std::nullopt;
    const std::string first = text.substr(0, colon), last = text.substr(colon + 1);
    if (!first.empty() && !seconds(first, range.first)) return std::nullopt;
    if (!last.empty() && !seconds(last, range.last)) return std::nullopt;
    if (range.first > range.last) return std::nullopt;
    range.given = true;
    return range;
}

double firstExperimentTime(const std::string& path) {
    const std::unique_ptr<FrameSource> source = openRecording(path);
    while (const auto frame = source->next()) {
        if (const auto timing = frame->typedSubObject<tq::eod::TimingOutputData>(
                tq::eod::TimingOutputData::THIS_OBJECT_ID)) {
            return timing->experimentTime();
        }
    }
    throw ToolError(path + ": --time needs timing records, there are none");
}

FrameRange seekTimeRange(const std::string& path, const TimeRange& times, FrameRange range) {
    if (!times.given) return range;
    const auto span = tq::eod::io::framesInTimeRange(path, times.first, times.last);
    if (!span) return range;
    if (span->first > span->last) {
        // No frame lies in the time range: any one frame number will do, the test rejects it.
        range.last = range.first;
        return range;
    }
    range.first = std::max(range.first, span->first);
    range.last = std::min(range.last, span->last);
    if (range.first > range.last) range.last = range.first;
    return range;
}

void requireRecordingPath(const std::string& path) {
    std::error_code ec;
    const std::filesystem::file_status status = std::filesystem::status(path, ec);
    if (ec || !std::filesystem::exists(status)) {
        throw ToolError(path + ": no such file or directory");
    }
    // A FIFO or a device would block the reader or never end.
    if (!std::filesystem::is_directory(status) && !std::filesystem::is_regular_file(status)) {
        throw ToolError(path + ": not a regular file");
    }
}

ToolError readError(const std::string& path, const tq::eod::EODError& e) {
    // A log file's error names the log that failed, not only the directory.
    if (const auto* log_error = dynamic_cast<const tq::eod::io::EngineOutputDataFileError*>(&e)) {
        if (!log_error->path().empty()) return ToolError(log_error->path() + ": " + e.what());
    }
    return ToolError(path + ": " + e.what());
}

bool isSelected(tq::eod::EngineOutputData& frame, const FrameRange& range,
                const std::vector<char>& ids) {
    return range.contains(frame.frameNum()) &&
           (ids.empty() || tq::eod::utils::keepObjectIDs(frame, ids));
}

boost::shared_ptr<tq::eod::EngineOutputData> nextSelected(FrameSource& source,
                                                          const FrameRange& range,
                                                          const std::vector<char>& ids) {
    while (boost::shared_ptr<tq::eod::EngineOutputData> frame = source.next()) {
        if (isSelected(*frame, range, ids)) return frame;
    }
    return nullptr;
}

}  // namespace eodtool
