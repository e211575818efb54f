// `eod demo [--frames N] [--out DIR]`: the synthetic engine records a session as
// per-object log files, the session is replayed and merged, every frame is checked
// against what was recorded, and a summary says how big and how fast it all was.

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <unistd.h>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/index/framerangereader.h>

#include "commands.h"
#include "logids.h"
#include "recordscan.h"
#include "testing/syntheticframe.h"
#include "toolerror.h"

namespace eodtool {

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

void printRate(const char* what, unsigned int frames, std::uint64_t bytes, double secs) {
    secs = std::max(secs, 1e-9);
    std::cout << what << std::fixed << std::setprecision(0) << std::setw(12) << frames / secs
              << " frames/s" << std::setprecision(1) << std::setw(10) << bytes / secs / 1e6
              << " MB/s\n";
    std::cout.unsetf(std::ios_base::floatfield);
}

}  // namespace

int runDemo(const DemoOptions& options) {
    std::error_code ec;
    fs::create_directories(options.out, ec);
    if (ec) throw ToolError(options.out + ": " + ec.message());
    const bool progress = isatty(STDERR_FILENO) != 0;

    // Record.
    Clock::duration encode_time{};
    std::uint64_t frame_bytes = 0;
    orToolError(options.out, [&] {
        tq::eod::io::EngineOutputDataFileWriter writer;
        for (unsigned int n = 0; n < options.frames; ++n) {
            const boost::shared_ptr<tq::eod::EngineOutputData> frame = eodtesting::syntheticFrame(n);
            if (n == 0) writer.newFiles(loggedIdsOf(*frame), options.out, "", kLogBufferSize);
            frame_bytes += frame->numTotalBytes();
            const Clock::time_point start = Clock::now();
            writer.writeData(*frame);
            encode_time += Clock::now() - start;
            if (progress && n % 1000 == 0) std::cerr << "\rrecording frame " << n;
        }
        const Clock::time_point start = Clock::now();
        writer.closeFiles();
        encode_time += Clock::now() - start;
    });

    // Replay, merge and compare.
    Clock::duration decode_time{};
    unsigned int replayed = 0;
    orToolError(options.out, [&] {
        tq::eod::io::EngineOutputDataFileReader reader;
        reader.openFiles(options.out);
        std::vector<unsigned char> expected, actual;
        for (;;) {
            const Clock::time_point start = Clock::now();
            const boost::shared_ptr<tq::eod::EngineOutputData> frame = reader.readData();
            decode_time += Clock::now() - start;
            if (!frame) break;
            expected.clear();
            actual.clear();
            eodtesting::syntheticFrame(replayed)->serialize(expected);
            frame->serialize(actual);
            if (frame->frameNum() != replayed || actual != expected) {
                throw ToolError(options.out + ": frame " + std::to_string(replayed) +
                                " did not come back as it was recorded");
            }
            ++replayed;
            if (progress && replayed % 1000 == 0) std::cerr << "\rreplaying frame " << replayed;
        }
    });
    if (progress) std::cerr << '\n';
    if (replayed != options.frames) {
        throw ToolError(options.out + ": " + std::to_string(replayed) + " of " +
                        std::to_string(options.frames) + " frames came back");
    }

    std::uint64_t log_bytes = 0;
    std::cout << "eod demo: " << options.frames << " synthetic frames recorded in " << options.out
              << ", replayed and merged; every frame came back equal\n";
    std::cout << "bytes per record type:\n";
    for (const std::string& log : orToolError("", [&] { return tq::eod::io::recordingLogFiles(options.out); })) {
        const FileScan scan = scanRecordFile(log);
        log_bytes += scan.size;
        for (const auto& entry : scan.by_id) {
            std::cout << "  " << std::left << std::setw(28) << objectName(entry.first) << std::right
                      << std::setw(12) << entry.second.bytes << " bytes in "
                      << fs::u8path(log).filename().string() << '\n';
        }
    }
    std::cout << "frames as encoded: " << frame_bytes << " bytes; log files: " << log_bytes
              << " bytes\n";
    printRate("encode (write logs):  ", options.frames, log_bytes, seconds(encode_time));
    printRate("decode (read, merge): ", options.frames, log_bytes, seconds(decode_time));
    return 0;
}

}  // namespace eodtool
