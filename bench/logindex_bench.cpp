// Index files on a 400,000-frame recording (about 110 minutes at 60 Hz) of four small logs:
// reading 10 frames from the middle through the index (FrameRangeReader) against the full
// merge that reads every record to find them, and the counts `eod info` shows (records per
// log, first and last frame number, merged frames) from the indexes alone. The range read
// should take the same time whatever the recording's length.

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <eod/eod.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logindex.h>
#include <eod/io/index/logindexwriter.h>

#include "tools/syntheticframe.h"

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
        const boost::shared_ptr<EngineOutputData> source = eodtool::syntheticFrame(1);
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
            for (unsigned int n = 0; n < NUM_FRAMES; ++n) {
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

// Records per log, first and last frame number, and the frames of the merged recording.
void BM_InfoCountsFromTheIndex(benchmark::State& state) {
    for (auto _ : state) {
        // Every log is in ascending order: the merged frame numbers are a union of sorted runs.
        std::vector<unsigned int> merged_numbers, numbers, next;
        std::size_t records = 0;
        for (const std::string& path : recordingLogFiles(recording().dir.string())) {
            const LogIndex index = LogIndex::openVerified(path);
            if (index.origin() != LogIndex::Origin::INDEX_FILE) state.SkipWithError("index not believed");
            records += index.size();
            benchmark::DoNotOptimize(index.entry(0).frame_num + index.entry(index.size() - 1).frame_num);
            numbers.clear();
            for (std::size_t i = 0; i < index.size(); ++i) numbers.push_back(index.entry(i).frame_num);
            next.clear();
            std::set_union(merged_numbers.begin(), merged_numbers.end(), numbers.begin(),
                           numbers.end(), std::back_inserter(next));
            next.erase(std::unique(next.begin(), next.end()), next.end());
            merged_numbers.swap(next);
        }
        const std::size_t merged = merged_numbers.size();
        if (merged != NUM_FRAMES || records != LOGS.size() * NUM_FRAMES) {
            state.SkipWithError("wrong counts");
        }
        benchmark::DoNotOptimize(merged);
    }
}
BENCHMARK(BM_InfoCountsFromTheIndex)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
