// Per-object log files against plain stdio on the same bytes: writing frames to their logs
// vs fwrite of the records the logs end up holding, and replaying (reading and merging) vs
// fread of the same files plus decoding every record.

#include <benchmark/benchmark.h>
#include <eod/eod.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "ratioreporter.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace tq::eod::io;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<unsigned char>;
using Timing = eodtest::TestRecord<10>;
using Head = eodtest::TestRecord<11>;
using Eye = eodtest::TestRecord<15>;

const unsigned int NUM_FRAMES = 20000;
const std::vector<char> LOGGED_IDS = {10, 11, 15};
const int BUFFER_SIZE = 65536;

const unsigned int NUM_DISTINCT_FRAMES = 64;

// The engine logs each frame right after building it, while it is in the cache: the frames
// written come from a small set that is reused, each time with the next frame number.
struct Setup {
    eodtest::ScopedObjectType<Timing> timing_type;
    eodtest::ScopedObjectType<Head> head_type;
    eodtest::ScopedObjectType<Eye> eye_type;
    fs::path dir;
    std::vector<EngineOutputData> frames;
    // What the log of each id holds: one encoded single-sub-object frame per record.
    std::map<char, std::vector<Bytes>> records;
    std::size_t total_bytes = 0;

    Setup() {
        std::string pattern = (fs::temp_directory_path() / "eod_logbench_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        dir = pattern;
        for (unsigned int i = 0; i < NUM_DISTINCT_FRAMES; ++i) {
            EngineOutputData frame;
            frame.addSubObject(boost::shared_ptr<Serializable>(new Timing(i)));
            frame.addSubObject(boost::shared_ptr<Serializable>(new Head(i)));
            frame.addSubObject(boost::shared_ptr<Serializable>(new Eye(i)));
            frames.push_back(frame);
        }
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
            const EngineOutputData& frame = frames[i % NUM_DISTINCT_FRAMES];
            for (char id : LOGGED_IDS) {
                EngineOutputData single;
                single.setFrameNum(i);
                single.addSubObject(boost::shared_ptr<Serializable>(frame.subObject(id)->clone()));
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

void writeLogs() {
    EngineOutputDataFileWriter writer;
    writer.newFiles(LOGGED_IDS, setup().dir.wstring(), L"", BUFFER_SIZE);
    for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
        EngineOutputData& frame = setup().frames[i % NUM_DISTINCT_FRAMES];
        frame.setFrameNum(i);
        writer.writeData(frame);
    }
}

void BM_WriteLogs(benchmark::State& state) {
    for (auto _ : state) writeLogs();
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().total_bytes));
}

void BM_FwriteSameBytes(benchmark::State& state) {
    std::vector<char> buffers[3];
    for (auto _ : state) {
        std::FILE* files[3];
        for (int k = 0; k < 3; ++k) {
            files[k] = std::fopen((setup().dir / ("baseline" + std::to_string(k))).c_str(), "wb");
            buffers[k].resize(BUFFER_SIZE);
            std::setvbuf(files[k], buffers[k].data(), _IOFBF, BUFFER_SIZE);
        }
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
            for (std::size_t k = 0; k < LOGGED_IDS.size(); ++k) {
                const Bytes& r = setup().records[LOGGED_IDS[k]][i];
                std::fwrite(r.data(), 1, r.size(), files[k]);
            }
        }
        for (std::FILE* f : files) std::fclose(f);
    }
    for (int k = 0; k < 3; ++k) fs::remove(setup().dir / ("baseline" + std::to_string(k)));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().total_bytes));
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
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().total_bytes));
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
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().total_bytes));
}

BENCHMARK(BM_WriteLogs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FwriteSameBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadAndMergeLogs)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FreadAndDecodeSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    setup();
    return eodbench::runWithRatios(argc, argv,
                                   {{"BM_WriteLogs", "BM_FwriteSameBytes"},
                                    {"BM_ReadAndMergeLogs", "BM_FreadAndDecodeSameBytes"}});
}
