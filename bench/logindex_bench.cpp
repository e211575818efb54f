// Index files on a 400,000-frame recording (about 110 minutes at 60 Hz) of four small logs:
// reading 10 frames from the middle through the index (FrameRangeReader) against the full
// merge that reads every record to find them, the same frames chosen by time, and `eod info`
// answering from the indexes alone against reading every record. The range read should take
// the same time whatever the recording's length.

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <limits>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <eod/eod.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logindex.h>
#include <eod/io/index/logindexwriter.h>
#include <eod/io/index/timeseek.h>

#include "testing/syntheticframe.h"

using namespace tq::eod;
using namespace tq::eod::io;
namespace fs = std::filesystem;

namespace {

const unsigned int NUM_FRAMES = 400000;
const unsigned int FIRST = NUM_FRAMES / 2, LAST = FIRST + 9;
// Timing, inertia, GPS and engine state: records of 36 to 90 bytes.
const std::vector<std::pair<char, const char*>> LOGS = {
    {10, "Timing"}, {32, "Inertia"}, {35, "GPSV2"}, {40, "EngineState"}};

struct Recording {
    fs::path dir;

    // Each log holds the synthetic engine's record of its id in every frame; the frame
    // number is written into a copy of one encoded record, which is all that changes.
    Recording() {
        std::string pattern = (fs::temp_directory_path() / "eod_indexbench_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        dir = pattern;
        const boost::shared_ptr<EngineOutputData> source = eodtesting::syntheticFrame(1);
        for (const auto& log : LOGS) {
            EngineOutputData single;
            single.addSubObject(boost::shared_ptr<Serializable>(source->subObject(log.first)->clone()));
            std::vector<unsigned char> record;
            single.serialize(record);
            const std::size_t frame_at = record.size() < 65538 ? 4 : 8;  // after header and flag
            const std::string path = (dir / (std::string(log.second) + ".tql")).string();
            std::FILE* out = std::fopen(path.c_str(), "wb");
            LogIndexWriter index;
            index.open(path);
            const auto timing = boost::dynamic_pointer_cast<TimingOutputData>(single.subObject(10));
            for (unsigned int n = 0; n < NUM_FRAMES; ++n) {
                if (timing) {
                    // Timing records carry their frame's time, for the seeks by time.
                    timing->setExperimentTime(n / 60.0);
                    record.clear();
                    single.serialize(record);
                }
                record[frame_at] = static_cast<unsigned char>(n >> 24);
                record[frame_at + 1] = static_cast<unsigned char>(n >> 16);
                record[frame_at + 2] = static_cast<unsigned char>(n >> 8);
                record[frame_at + 3] = static_cast<unsigned char>(n);
                std::fwrite(record.data(), 1, record.size(), out);
                index.add(n, record.size());
            }
            std::fclose(out);
            index.close();
        }
    }
    ~Recording() { fs::remove_all(dir); }
};

const Recording& recording() {
    static const Recording r;
    return r;
}

void checkTen(benchmark::State& state, std::size_t frames) {
    if (frames != 10) state.SkipWithError("expected 10 frames");
}

void BM_TenFramesFromTheMiddle_Index(benchmark::State& state) {
    const std::string dir = recording().dir.string();
    for (auto _ : state) {
        FrameRangeReader reader;
        reader.open(dir);
        reader.setRange(FIRST, LAST);
        std::size_t frames = 0;
        while (reader.readData()) ++frames;
        checkTen(state, frames);
        if (!reader.searched()) state.SkipWithError("the index was not used");
    }
}
BENCHMARK(BM_TenFramesFromTheMiddle_Index)->Unit(benchmark::kMillisecond);

void BM_TenFramesFromTheMiddle_FullScan(benchmark::State& state) {
    const std::string dir = recording().dir.string();
    for (auto _ : state) {
        EngineOutputDataFileReader reader;
        reader.openFiles(dir);
        std::size_t frames = 0;
        while (const auto frame = reader.readData()) {
            if (frame->frameNum() >= FIRST && frame->frameNum() <= LAST) ++frames;
        }
        checkTen(state, frames);
    }
}
BENCHMARK(BM_TenFramesFromTheMiddle_FullScan)->Unit(benchmark::kMillisecond)->Iterations(1);

// The same 10 frames chosen by time, 1/60 s apart: a binary search over the timing log's
// index for the frame numbers, then the range read.
void BM_TenFramesByTime_Index(benchmark::State& state) {
    const std::string dir = recording().dir.string();
    const double from = FIRST / 60.0, to = LAST / 60.0;
    for (auto _ : state) {
        const std::optional<FrameSpan> span = framesInTimeRange(dir, from, to);
        if (!span) {
            state.SkipWithError("no seek by time");
            break;
        }
        FrameRangeReader reader;
        reader.open(dir);
        reader.setRange(span->first, span->last);
        std::size_t frames = 0;
        while (const auto frame = reader.readData()) {
            const auto timing = frame->typedSubObject<TimingOutputData>(10);
            if (timing && timing->experimentTime() >= from && timing->experimentTime() <= to) ++frames;
        }
        checkTen(state, frames);
    }
}
BENCHMARK(BM_TenFramesByTime_Index)->Unit(benchmark::kMillisecond);

// `eod info` of the recording as a user runs it: every answer from the index files. The
// process start is included.
void BM_EodInfoFromTheIndex(benchmark::State& state) {
    const std::string command = std::string(EOD_TOOL_PATH) + " info " + recording().dir.string() + " >/dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("eod info failed");
    }
}
BENCHMARK(BM_EodInfoFromTheIndex)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same with --scan: every record read.
void BM_EodInfoFullScan(benchmark::State& state) {
    const std::string command =
        std::string(EOD_TOOL_PATH) + " info --scan " + recording().dir.string() + " >/dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("eod info failed");
    }
}
BENCHMARK(BM_EodInfoFullScan)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
