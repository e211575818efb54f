#include <eod/io/index/timeseek.h>

#include <filesystem>
#include <fstream>

#include <boost/pointer_cast.hpp>

#include <eod/engineoutputdata.h>
#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/index/logindex.h>
#include <eod/serializablefactory.h>
#include <eod/timingoutputdata.h>

namespace tq {
namespace eod {
namespace io {

namespace fs = std::filesystem;

std::optional<double> experimentTimeAt(std::istream& log, std::uint64_t offset) {
    log.clear();
    log.seekg(static_cast<std::streamoff>(offset));
    unsigned int status = 0;
    const auto frame = boost::dynamic_pointer_cast<EngineOutputData>(
        SerializableFactory::newObjectWithStatus(log, status));
    log.clear();
    const auto timing =
        frame ? frame->typedSubObject<TimingOutputData>(TimingOutputData::THIS_OBJECT_ID) : nullptr;
    if (!timing) return std::nullopt;
    return timing->experimentTime();
}

namespace {

std::string timingLogOf(const std::string& path) {
    std::error_code ec;
    if (!fs::is_directory(fs::u8path(path), ec)) return path;
    const fs::path name(EngineOutputDataFileWriter::objectIDToFileName(TimingOutputData::THIS_OBJECT_ID) +
                        EngineOutputData::LOGFILE_EXTENSION());
    return (fs::u8path(path) / name).u8string();
}

}  // namespace

std::optional<FrameSpan> framesInTimeRange(const std::string& path, double from, double to) {
    try {
        const std::string log = timingLogOf(path);
        const LogIndex index = LogIndex::open(log);
        if (!index.monotonic() || index.size() == 0) {
            return std::nullopt;
        }
        std::ifstream in(fs::u8path(log), std::ios_base::in | std::ios_base::binary);
        const std::optional<double> t0 = experimentTimeAt(in, index.entry(0).offset);
        if (!t0) return std::nullopt;
        // The first entry whose time is not before `limit` (or, with `after`, after it).
        bool answered = true;
        const auto search = [&](double limit, bool after) {
            std::size_t low = 0, high = index.size();
            while (low < high) {
                const std::size_t mid = low + (high - low) / 2;
                const std::optional<double> t = experimentTimeAt(in, index.entry(mid).offset);
                if (!t) {
                    answered = false;
                    return high;
                }
                if (after ? *t - *t0 <= limit : *t - *t0 < limit) {
                    low = mid + 1;
                } else {
                    high = mid;
                }
            }
            return low;
        };
        const std::size_t begin = search(from, false);
        const std::size_t end = search(to, true);
        if (!answered) return std::nullopt;
        if (begin >= end) return FrameSpan{1, 0};
        return FrameSpan{index.entry(begin).frame_num, index.entry(end - 1).frame_num};
    } catch (const EODError&) {
        return std::nullopt;
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
