// `eod info PATH`: what a log directory, a log file or a raw record file holds, and the
// frame ledger that says why frames are missing. A summary comes first: frames, frame
// numbers, duration and mean frame rate from the timing records, and the frames that lack
// some of the record types the recording holds.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <unistd.h>

#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logindex.h>
#include <eod/io/index/timeseek.h>
#include <eod/io/recordingreader.h>
#include <eod/timingoutputdata.h>

#include "commands.h"
#include "framesource.h"
#include "recordscan.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;
using tq::eod::io::FrameLedger;
using tq::eod::io::LogIndex;

namespace {

void printFrames(std::ostream& os, const FrameLedger& ledger, const std::string& indent) {
    os << indent << "frames: " << ledger.numFrames();
    if (!ledger.empty()) {
        os << ", frame numbers " << ledger.firstFrameNum() << ".." << ledger.lastFrameNum();
    }
    os << '\n';
}

void printIds(std::ostream& os, const FileScan& scan, const std::string& indent) {
    if (scan.from_index) {
        os << indent << "records by object id: not counted (frames from the index file; "
                        "--scan reads every record)\n";
        return;
    }
    os << indent << "records by object id:\n"
       << indent << "  " << std::setw(4) << "id" << "  " << std::left << std::setw(32) << "name"
       << std::right << std::setw(10) << "count" << std::setw(14) << "bytes" << '\n';
    for (const auto& entry : scan.by_id) {
        os << indent << "  " << std::setw(4) << entry.first << "  " << std::left << std::setw(32)
           << objectName(entry.first) << std::right << std::setw(10) << entry.second.count
           << std::setw(14) << entry.second.bytes << '\n';
    }
}

void printScan(std::ostream& os, const FileScan& scan, const std::string& indent) {
    printFrames(os, scan.ledger, indent);
    printIds(os, scan, indent);
    os << indent << "ledger:\n";
    scan.ledger.print(os, indent + "  ");
}

// Reads over this many bytes show progress, when someone watches stderr.
const std::uint64_t kProgressBytes = 4u << 20;

// What the summary says beyond the ledger.
struct Summary {
    std::size_t timed_frames = 0;
    double first_time = 0;
    double last_time = 0;
    std::uint64_t incomplete = 0;
    bool has_incomplete = false;
    unsigned int first_incomplete = 0;

    void addTime(double t) {
        if (timed_frames++ == 0) first_time = t;
        last_time = t;
    }
    void addIncomplete(unsigned int frame_num) {
        if (!has_incomplete || frame_num < first_incomplete) first_incomplete = frame_num;
        has_incomplete = true;
        ++incomplete;
    }
};

// Reads the frames of a file in order for the summary: their experiment times and, when
// `types` is given, the frames that lack a top-level record type that others have (with
// `upgrade`, as each frame reads in the current layout). With `frames`, their numbers go to
// that ledger too (no byte offsets: a container's frames have none of their own). A damaged
// tail ends the reading; the byte scan's ledger reports it.
void readFrames(const std::string& path, Summary& summary, bool types, bool upgrade,
                FrameLedger* frames = nullptr) {
    // Frames by the ids they hold (in the frame's ascending order): how many, and the first.
    struct Kind {
        std::uint64_t count = 0;
        unsigned int first = 0;
    };
    std::map<std::vector<char>, Kind> kinds;
    std::set<char> all;
    try {
        std::unique_ptr<FrameSource> source = openRecording(path, upgrade);
        while (const auto frame = source->next()) {
            if (frames) frames->addFrame(frame->frameNum(), 0);
            if (const auto timing = frame->typedSubObject<tq::eod::TimingOutputData>(
                    tq::eod::TimingOutputData::THIS_OBJECT_ID)) {
                summary.addTime(timing->experimentTime());
            }
            if (!types) continue;
            std::vector<char> ids;
            for (const auto& sub : frame->subObjects()) {
                if (ids.empty() || ids.back() != sub->objectID()) ids.push_back(sub->objectID());
            }
            all.insert(ids.begin(), ids.end());
            Kind& kind = kinds[ids];
            if (kind.count++ == 0 || frame->frameNum() < kind.first) kind.first = frame->frameNum();
        }
    } catch (const ToolError&) {
    }
    for (const auto& entry : kinds) {
        if (entry.first.size() == all.size()) continue;
        summary.addIncomplete(entry.second.first);
        summary.incomplete += entry.second.count - 1;
    }
}

void printSummary(std::ostream& os, const FrameLedger& ledger, const Summary& summary) {
    os << "summary:\n  ";
    printFrames(os, ledger, "");
    if (summary.timed_frames >= 2 && summary.last_time > summary.first_time) {
        const double duration = summary.last_time - summary.first_time;
        os << "  duration: " << duration << " s, mean frame rate "
           << (summary.timed_frames - 1) / duration << " Hz (from " << summary.timed_frames
           << " timing records)\n";
    } else {
        os << "  duration: unknown (fewer than two timing records)\n";
    }
    os << "  incomplete frames: " << summary.incomplete;
    if (summary.has_incomplete) {
        os << " (some record types missing; the first at frame " << summary.first_incomplete << ')';
    }
    os << '\n';
}

// The frames of a log from its index file, when the index checks out against the log and
// covers every byte of it, so no damage can lie between its records: no record is read.
std::optional<FileScan> indexScan(const std::string& log) {
    try {
        const LogIndex index = LogIndex::openVerified(log);
        if (index.origin() != LogIndex::Origin::INDEX_FILE || index.recordsEnd() != index.logSize()) {
            return std::nullopt;
        }
        FileScan scan;
        scan.path = log;
        scan.size = index.logSize();
        scan.records = scan.known_records = index.size();
        scan.from_index = true;
        for (std::size_t i = 0; i < index.size(); ++i) {
            const tq::eod::io::LogIndexEntry entry = index.entry(i);
            scan.ledger.addFrame(entry.frame_num, entry.offset);
        }
        return scan;
    } catch (const tq::eod::EODError&) {
        // An index that cannot be read is no index: the log is scanned.
        return std::nullopt;
    }
}

// Duration and rate from the first and the last record of the timing log, found through its
// index: false when there is no believed index or those records hold no timing record.
bool timesFromIndex(const std::string& timing_log, Summary& summary) {
    try {
        const LogIndex index = LogIndex::open(timing_log);
        if (index.origin() != LogIndex::Origin::INDEX_FILE || index.size() == 0) return false;
        std::ifstream in(fs::u8path(timing_log), std::ios_base::in | std::ios_base::binary);
        const std::optional<double> first = tq::eod::io::experimentTimeAt(in, index.entry(0).offset);
        const std::optional<double> last = tq::eod::io::experimentTimeAt(in, index.entry(index.size() - 1).offset);
        if (!first || !last) return false;
        summary.timed_frames = index.size();
        summary.first_time = *first;
        summary.last_time = *last;
        return true;
    } catch (const tq::eod::EODError&) {
        return false;
    }
}

// Frame numbers in `a` and in `b`, both runs in ascending order.
std::vector<FrameLedger::Range> commonRuns(const std::vector<FrameLedger::Range>& a,
                                           const std::vector<FrameLedger::Range>& b) {
    std::vector<FrameLedger::Range> common;
    for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        const unsigned int first = std::max(a[i].first, b[j].first);
        const unsigned int last = std::min(a[i].last, b[j].last);
        if (first <= last) common.push_back({first, last});
        if (a[i].last < b[j].last) {
            ++i;
        } else {
            ++j;
        }
    }
    return common;
}

// The frames of the merged recording that some log lacks: the merged frame numbers outside
// the runs every log has.
void countIncomplete(const FrameLedger& merged, const std::vector<FileScan>& scans, Summary& summary) {
    std::vector<FrameLedger::Range> everywhere = merged.frameRuns();
    for (const FileScan& scan : scans) everywhere = commonRuns(everywhere, scan.ledger.frameRuns());
    std::uint64_t complete = 0;
    for (const auto& run : everywhere) complete += std::uint64_t(run.last) - run.first + 1;
    summary.incomplete = merged.numFrames() - complete;
    if (summary.incomplete == 0) return;
    summary.has_incomplete = true;
    // The first merged frame number outside the common runs.
    std::size_t j = 0;
    for (const auto& run : merged.frameRuns()) {
        std::uint64_t n = run.first;
        while (j < everywhere.size() && everywhere[j].last < n) ++j;
        while (j < everywhere.size() && everywhere[j].first <= n && n <= everywhere[j].last) {
            n = std::uint64_t(everywhere[j].last) + 1;
            ++j;
        }
        if (n <= run.last) {
            summary.first_incomplete = static_cast<unsigned int>(n);
            return;
        }
    }
}

// A file in which not one record could be decoded is not a record file at all.
void requireRecords(const FileScan& scan) {
    if (scan.size > 0 && scan.known_records == 0) {
        throw ToolError(scan.path + ": not a record file (no record in it can be decoded)");
    }
}

}  // namespace

int runInfo(const InfoOptions& options) {
    std::error_code ec;
    const fs::file_status status = fs::status(options.path, ec);
    if (ec || !fs::exists(status)) throw ToolError(options.path + ": no such file or directory");

    if (!fs::is_directory(status)) {
        const bool progress =
            fs::file_size(options.path, ec) > kProgressBytes && isatty(STDERR_FILENO) != 0;
        if (progress) std::cerr << "reading " << options.path << " twice..." << std::flush;
        const FileScan scan = scanRecordFile(options.path);
        Summary summary;
        if (tq::eod::io::RecordingReader::isContainer(options.path)) {
            // The records of a container are compressed groups of frames: the frames
            // themselves are counted as the container's reader gives them back.
            FrameLedger frames;
            readFrames(options.path, summary, true, options.upgrade, &frames);
            if (progress) std::cerr << "\r\x1b[K" << std::flush;
            std::cout << options.path << ": compressed container, " << scan.size << " bytes, "
                      << scan.records << " records\n";
            printSummary(std::cout, frames, summary);
            std::cout << "ledger:\n";
            frames.print(std::cout, "  ");
            return 0;
        }
        if (scan.known_records > 0) readFrames(options.path, summary, true, options.upgrade);
        if (progress) std::cerr << "\r\x1b[K" << std::flush;
        requireRecords(scan);
        std::cout << options.path << ": record file, " << scan.size << " bytes, " << scan.records
                  << " records\n";
        printSummary(std::cout, scan.ledger, summary);
        printScan(std::cout, scan, "");
        return 0;
    }

    // One entry that cannot be read as a log (a symlink loop, a FIFO) does not spoil the
    // others: it is reported and left out.
    std::vector<std::string> skipped;
    const std::vector<std::string> logs = orToolError("", [&] {
        return tq::eod::io::recordingLogFiles(options.path, &skipped);
    });
    for (const std::string& entry : skipped) std::cerr << "eod: " << entry << ": skipped: not a regular file\n";

    std::uint64_t total = 0;
    for (const std::string& log : logs) total += fs::file_size(fs::u8path(log), ec);
    const bool progress = total > kProgressBytes && isatty(STDERR_FILENO) != 0;

    std::vector<FileScan> scans;
    std::uint64_t bytes = 0;
    FrameLedger merged;
    for (const std::string& log : logs) {
        if (progress) {
            std::cerr << "\rreading " << fs::u8path(log).filename().string() << " ("
                      << bytes * 100 / total << "%)\x1b[K" << std::flush;
        }
        std::optional<FileScan> scan;
        if (!options.scan) scan = indexScan(log);
        scans.push_back(scan ? std::move(*scan) : scanRecordFile(log));
        bytes += scans.back().size;
        merged.mergeFrameNumbers(scans.back().ledger);
    }
    if (progress) std::cerr << "\r\x1b[K" << std::flush;

    Summary summary;
    countIncomplete(merged, scans, summary);
    const fs::path timing =
        fs::u8path(options.path) /
        fs::path(tq::eod::io::EngineOutputDataFileWriter::objectIDToFileName(
                     tq::eod::TimingOutputData::THIS_OBJECT_ID) +
                 tq::eod::EngineOutputData::LOGFILE_EXTENSION());
    const bool indexed = std::all_of(scans.begin(), scans.end(), [](const FileScan& s) { return s.from_index; });
    if (fs::exists(timing, ec) && !(indexed && timesFromIndex(timing.u8string(), summary))) {
        readFrames(timing.u8string(), summary, false, false);
    }

    std::cout << options.path << ": log directory, " << logs.size() << " log files, " << bytes
              << " bytes\n";
    printSummary(std::cout, merged, summary);
    std::cout << "merged ";
    merged.printGaps(std::cout);
    std::cout << '\n';
    for (const FileScan& scan : scans) {
        std::cout << '\n' << fs::u8path(scan.path).filename().string() << ": " << scan.size
                  << " bytes, " << scan.records << " records\n";
        printScan(std::cout, scan, "  ");
    }
    return 0;
}

}  // namespace eodtool
