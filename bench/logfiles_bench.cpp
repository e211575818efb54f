// Per-object log files against plain stdio on the same bytes, with typical ~1.5 KB frames of
// the synthetic engine: writing frames to their logs vs fwrite of the records the logs end up
// holding, and replaying (reading and merging) vs fread of the same files plus decoding
// every record. Prints each path's frame rate as a fraction of its baseline's.

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <eod/eod.h>

#include "benchratios.h"
#include "testing/syntheticframe.h"

using namespace tq::eod;
using namespace tq::eod::io;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned int NUM_FRAMES = 5000;
// Top-level records and, found inside the face set, head, face and eye.
const std::vector<char> LOGGED_IDS = {10, 15, 16, 32, 35, 40, 43, 93};
const int BUFFER_SIZE = 65536;

const unsigned int NUM_DISTINCT_FRAMES = 64;

// The engine logs each frame right after building it, while it is in the cache: the frames
// written come from a small set that is reused, each time with the next frame number.
struct Setup {
    fs::path dir;
    std::vector<boost::shared_ptr<EngineOutputData>> frames;
    // What the log of each id holds: one encoded single-sub-object frame per record.
    std::map<char, std::vector<Bytes>> records;
    std::size_t total_bytes = 0;

    Setup() {
        std::string pattern = (fs::temp_directory_path() / "eod_logbench_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        dir = pattern;
        for (unsigned int i = 0; i < NUM_DISTINCT_FRAMES; ++i) {
            frames.push_back(eodtesting::syntheticFrame(i));
        }
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
            const EngineOutputData& frame = *frames[i % NUM_DISTINCT_FRAMES];
            const boost::shared_ptr<const SerializableComposite> face_set =
                frame.typedSubObject<SerializableComposite>(FaceSetOutputData::THIS_OBJECT_ID);
            for (char id : LOGGED_IDS) {
                boost::shared_ptr<const Serializable> sub = frame.subObject(id);
                if (!sub) sub = face_set->subObject(id);
                EngineOutputData single;
                single.setFrameNum(i);
                single.addSubObject(boost::shared_ptr<Serializable>(sub->clone()));
                Bytes bytes;
                single.serialize(bytes);
                total_bytes += bytes.size();
                records[id].push_back(std::move(bytes));
            }
        }
    }
    ~Setup() { fs::remove_all(dir); }
};

Setup& setup() {
    static Setup s;
    return s;
}

void countFrames(benchmark::State& state) {
    state.SetItemsProcessed(int64_t(state.iterations()) * NUM_FRAMES);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().total_bytes));
}

void writeLogs() {
    EngineOutputDataFileWriter writer;
    writer.newFiles(LOGGED_IDS, setup().dir.wstring(), L"", BUFFER_SIZE);
    for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
        EngineOutputData& frame = *setup().frames[i % NUM_DISTINCT_FRAMES];
        frame.setFrameNum(i);
        writer.writeData(frame);
    }
}

void BM_WriteLogs(benchmark::State& state) {
    for (auto _ : state) writeLogs();
    countFrames(state);
}

void BM_FwriteSameBytes(benchmark::State& state) {
    const std::size_t num_files = LOGGED_IDS.size();
    std::vector<std::vector<char>> buffers(num_files, std::vector<char>(BUFFER_SIZE));
    std::vector<std::FILE*> files(num_files);
    const auto path = [](std::size_t k) { return setup().dir / ("baseline" + std::to_string(k)); };
    for (auto _ : state) {
        for (std::size_t k = 0; k < num_files; ++k) {
            files[k] = std::fopen(path(k).c_str(), "wb");
            std::setvbuf(files[k], buffers[k].data(), _IOFBF, BUFFER_SIZE);
        }
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
            for (std::size_t k = 0; k < num_files; ++k) {
                const Bytes& r = setup().records[LOGGED_IDS[k]][i];
                std::fwrite(r.data(), 1, r.size(), files[k]);
            }
        }
        for (std::FILE* f : files) std::fclose(f);
    }
    for (std::size_t k = 0; k < num_files; ++k) fs::remove(path(k));
    countFrames(state);
}

void BM_ReadAndMergeLogs(benchmark::State& state) {
    writeLogs();
    for (auto _ : state) {
        EngineOutputDataFileReader reader;
        reader.openFiles(setup().dir.wstring());
        unsigned int frames = 0;
        while (reader.readData()) ++frames;
        if (frames != NUM_FRAMES) state.SkipWithError("wrong number of frames");
    }
    countFrames(state);
}

void BM_FreadAndDecodeSameBytes(benchmark::State& state) {
    writeLogs();
    for (auto _ : state) {
        std::size_t records = 0;
        for (const auto& entry : fs::directory_iterator(setup().dir)) {
            std::FILE* f = std::fopen(entry.path().c_str(), "rb");
            Bytes bytes(fs::file_size(entry.path()));
            if (std::fread(bytes.data(), 1, bytes.size(), f) != bytes.size()) std::abort();
            std::fclose(f);
            int pos = 0;
            while (std::size_t(pos) < bytes.size()) {
                benchmark::DoNotOptimize(SerializableFactory::newObject(bytes, pos));
                ++records;
            }
        }
        if (records != NUM_FRAMES * LOGGED_IDS.size()) state.SkipWithError("wrong record count");
    }
    countFrames(state);
}

BENCHMARK(BM_WriteLogs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FwriteSameBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadAndMergeLogs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreadAndDecodeSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    setup();
    return benchratios::runWithRatios(
        argc, argv,
        {{"write logs / fwrite", "BM_WriteLogs", "BM_FwriteSameBytes"},
         {"read and merge logs / fread and decode", "BM_ReadAndMergeLogs",
          "BM_FreadAndDecodeSameBytes"}},
        "frames of " + std::to_string(setup().total_bytes / NUM_FRAMES) + " bytes in " +
            std::to_string(LOGGED_IDS.size()) + " logs\n");
}
