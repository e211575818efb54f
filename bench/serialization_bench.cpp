// Encoding and decoding of frames, each beside a memcpy of the same bytes in the same run;
// compare bytes_per_second. The counter allocs_per_frame counts calls of operator new per
// frame (building a synthetic frame through the public setters, serialising, decoding). The nested cases encode the same records once as a flat frame
// and once as a chain of composites 8 levels deep: the per-byte cost should not depend on
// the depth, because each record's size field is filled in after its data is written
// instead of being computed level by level.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include <eod/eod.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"
#include "testing/syntheticframe.h"

using namespace tq::eod;

// Every allocation of the program counts: the figure per frame is the difference across a
// benchmark's loop divided by its iterations.
namespace {
std::atomic<long long> allocations{0};
}

void* operator new(std::size_t n) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(n != 0 ? n : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

// Allocations per iteration since `before`, as the benchmark's counter allocs_per_frame.
void reportAllocations(benchmark::State& state, long long before) {
    state.counters["allocs_per_frame"] =
        double(allocations.load() - before) / double(std::max<int64_t>(state.iterations(), 1));
}

typedef boost::shared_ptr<Serializable> Ptr;

// A record shaped like the engine's pose and gaze records: a few 3D vectors, a quality
// value and a frame counter, listed once and encoded through the field visitors.
class PoseRecord : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 60;

    PoseRecord() : _position(3), _rotation(4), _gaze(6) {}
    explicit PoseRecord(float seed) : PoseRecord() {
        for (float& v : _position) v = seed += 0.25f;
        for (float& v : _rotation) v = seed += 0.5f;
        for (float& v : _gaze) v = seed -= 0.125f;
        _quality = static_cast<int>(seed);
    }

    char objectID() const override { return THIS_OBJECT_ID; }
    PoseRecord* clone() const override { return new PoseRecord(*this); }
    bool forbidDuplicateSiblings() const override { return false; }
    void printOwnHeader(std::ostream& os) const override { detail::Columns(os) << "POSE"; }
    void printOwnData(std::ostream& os) const override { detail::Columns(os) << _quality; }

protected:
    template <class Self, class V>
    static void visitFields(Self& self, V& v) {
        v(self._position);
        v(self._rotation);
        v(self._gaze);
        v(self._quality);
        v(self._confidence);
        v(self._valid);
    }
    unsigned int numEngineSpecificDataBytes() const override {
        detail::FieldSizer s;
        visitFields(*this, s);
        return s.bytes;
    }
    void appendEngineSpecificData(std::vector<unsigned char>& b) const override {
        detail::FieldWriter w{b};
        visitFields(*this, w);
    }
    void readEngineSpecificData(const std::vector<unsigned char>& b, int& pos) override {
        detail::FieldReader r{b, pos};
        visitFields(*this, r);
    }

private:
    std::vector<float> _position, _rotation, _gaze;
    int _quality = 0;
    double _confidence = 0.5;
    bool _valid = true;
};

// A record carrying a large opaque block, like an image.
class BlobRecord : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 61;

    BlobRecord() = default;
    explicit BlobRecord(std::size_t n) : _blob(n, 0x5A) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    BlobRecord* clone() const override { return new BlobRecord(*this); }
    void printOwnHeader(std::ostream& os) const override { detail::Columns(os) << "BLOB"; }
    void printOwnData(std::ostream& os) const override { detail::Columns(os) << _blob.size(); }

protected:
    unsigned int numEngineSpecificDataBytes() const override {
        return 4 + static_cast<unsigned int>(_blob.size());
    }
    void appendEngineSpecificData(std::vector<unsigned char>& b) const override {
        detail::appendNumber(b, static_cast<unsigned int>(_blob.size()));
        detail::appendRaw(b, _blob.data(), _blob.size());
    }
    void readEngineSpecificData(const std::vector<unsigned char>& b, int& pos) override {
        const unsigned int n = detail::readNumber<unsigned int>(b, pos);
        _blob.resize(n);
        detail::readRaw(b, pos, _blob.data(), n);
    }

private:
    std::vector<unsigned char> _blob;
};

template <class T>
Ptr create() {
    return Ptr(new T());
}

const bool registered = [] {
    SerializableFactory::registerObjectType(PoseRecord::THIS_OBJECT_ID, &create<PoseRecord>);
    SerializableFactory::registerObjectType(BlobRecord::THIS_OBJECT_ID, &create<BlobRecord>);
    return true;
}();

// A frame of `records` pose records and tokens.
EngineOutputData typicalFrame(int records) {
    EngineOutputData frame;
    frame.setFrameNum(12345);
    for (int i = 0; i < records; ++i) {
        frame.addSubObject(Ptr(new PoseRecord(float(i))));
        frame.addSubObject(Ptr(new CompressedSerializableToken(i)));
    }
    return frame;
}

// The same pose records, 8 per level, either all in the frame or in a chain of composites
// 8 levels deep; `blob` bytes sit at the bottom.
EngineOutputData layeredFrame(int levels, std::size_t blob) {
    const int per_level = 8;
    boost::shared_ptr<EngineOutputBase> bottom(new PoseRecord(0.0f));
    if (blob > 0) bottom->addSubObject(Ptr(new BlobRecord(blob)));
    std::vector<Ptr> flat;
    for (int level = 0; level < 8; ++level) {
        for (int i = 0; i < per_level; ++i) flat.push_back(Ptr(new PoseRecord(float(i))));
    }
    EngineOutputData frame;
    if (levels == 1) {
        for (const Ptr& p : flat) frame.addSubObject(p);
        frame.addSubObject(bottom);
        return frame;
    }
    boost::shared_ptr<EngineOutputBase> current = bottom;
    for (int level = 0; level < levels; ++level) {
        boost::shared_ptr<EngineOutputBase> parent(new PoseRecord(float(level)));
        for (int i = 0; i < per_level; ++i) parent->addSubObject(flat[level * per_level + i]);
        parent->addSubObject(current);
        current = parent;
    }
    frame.addSubObject(current);
    return frame;
}

void encode(benchmark::State& state, const EngineOutputData& frame) {
    std::vector<unsigned char> buffer;
    frame.serialize(buffer);
    const long long before = allocations.load();
    for (auto _ : state) {
        buffer.clear();
        frame.serialize(buffer);
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    reportAllocations(state, before);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(buffer.size()));
    state.counters["bytes"] = double(buffer.size());
}

void copy(benchmark::State& state, const EngineOutputData& frame) {
    std::vector<unsigned char> bytes;
    frame.serialize(bytes);
    std::vector<unsigned char> out(bytes.size());
    for (auto _ : state) {
        std::memcpy(out.data(), bytes.data(), bytes.size());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.counters["bytes"] = double(bytes.size());
}

void decode(benchmark::State& state, const EngineOutputData& frame) {
    std::vector<unsigned char> bytes;
    frame.serialize(bytes);
    const long long before = allocations.load();
    for (auto _ : state) {
        int read_pos = 0;
        Ptr p = SerializableFactory::newObject(bytes, read_pos);
        benchmark::DoNotOptimize(p.get());
    }
    reportAllocations(state, before);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
    state.counters["bytes"] = double(bytes.size());
}

void BM_Memcpy_Frame(benchmark::State& state) { copy(state, typicalFrame(int(state.range(0)))); }
void BM_Encode_Frame(benchmark::State& state) { encode(state, typicalFrame(int(state.range(0)))); }
void BM_Decode_Frame(benchmark::State& state) { decode(state, typicalFrame(int(state.range(0)))); }

// A frame of the synthetic engine: face, eyes, world intersections and the rest (~1.5 KB).
const EngineOutputData& syntheticFrame() {
    static const boost::shared_ptr<EngineOutputData> frame = eodtesting::syntheticFrame(12345);
    return *frame;
}
void BM_Memcpy_Synthetic(benchmark::State& state) { copy(state, syntheticFrame()); }
// Building a frame as an engine adapter does, through the public setters.
void BM_Build_Synthetic(benchmark::State& state) {
    const long long before = allocations.load();
    for (auto _ : state) {
        boost::shared_ptr<EngineOutputData> frame = eodtesting::syntheticFrame(12345);
        benchmark::DoNotOptimize(frame.get());
    }
    reportAllocations(state, before);
}
void BM_Encode_Synthetic(benchmark::State& state) { encode(state, syntheticFrame()); }
void BM_Decode_Synthetic(benchmark::State& state) { decode(state, syntheticFrame()); }

void BM_Memcpy_Layered(benchmark::State& state) {
    copy(state, layeredFrame(int(state.range(0)), std::size_t(state.range(1))));
}
void BM_Encode_Layered(benchmark::State& state) {
    encode(state, layeredFrame(int(state.range(0)), std::size_t(state.range(1))));
}

BENCHMARK(BM_Memcpy_Frame)->Arg(4)->Arg(16);
BENCHMARK(BM_Encode_Frame)->Arg(4)->Arg(16);
BENCHMARK(BM_Decode_Frame)->Arg(4)->Arg(16);
BENCHMARK(BM_Memcpy_Synthetic);
BENCHMARK(BM_Build_Synthetic);
BENCHMARK(BM_Encode_Synthetic);
BENCHMARK(BM_Decode_Synthetic);
// Args: levels (1 = flat, 8 = nested), bytes of the block at the bottom.
BENCHMARK(BM_Memcpy_Layered)->Args({1, 0})->Args({1, 256 << 10});
BENCHMARK(BM_Encode_Layered)->Args({1, 0})->Args({8, 0})->Args({1, 256 << 10})->Args({8, 256 << 10});

}  // namespace

BENCHMARK_MAIN();
