// The zlib record stream against plain zlib on the same bytes: the encoder against deflate
// of the framed records at the same level and window, the decoder (inflate, CRC check and
// rebuilding every record) against inflate alone of the same compressed stream.

#include <benchmark/benchmark.h>
#include <eod/eod.h>
#include <zlib.h>

#include <vector>

#include "ratioreporter.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;
using Timing = eodtest::TestRecord<10>;
using Head = eodtest::TestRecord<11>;
using Eye = eodtest::TestRecord<15>;

const unsigned int NUM_FRAMES = 20000;
const int LEVEL = 6;
const int MAX_PENDING_RECORDS = 16;
const unsigned int CHUNK = 65536;

struct Setup {
    eodtest::ScopedObjectType<Timing> timing_type;
    eodtest::ScopedObjectType<Head> head_type;
    eodtest::ScopedObjectType<Eye> eye_type;
    std::vector<EngineOutputData> frames;
    Bytes framed;      // the uncompressed stream: every frame with its 12-byte header
    Bytes compressed;  // what the encoder makes of it
    int window_bits = 0;

    Setup() {
        ZLibEncoder encoder(LEVEL, MAX_PENDING_RECORDS);
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) {
            EngineOutputData frame;
            frame.setFrameNum(i);
            frame.addSubObject(boost::shared_ptr<Serializable>(new Timing(i)));
            frame.addSubObject(boost::shared_ptr<Serializable>(new Head(i % 97)));
            frame.addSubObject(boost::shared_ptr<Serializable>(new Eye(i % 13)));
            encoder.encode(frame, i, compressed);
            frames.push_back(frame);
        }
        encoder.flush(compressed);
        // The independent inflater gives back the framed stream the encoder compressed.
        z_stream s{};
        inflateInit2(&s, -15);
        framed.resize(NUM_FRAMES * 256);
        s.next_in = compressed.data();
        s.avail_in = uInt(compressed.size());
        s.next_out = framed.data();
        s.avail_out = uInt(framed.size());
        inflate(&s, Z_SYNC_FLUSH);
        framed.resize(framed.size() - s.avail_out);
        inflateEnd(&s);
        window_bits = ZLibCodecImpl::newDeflater(LEVEL, 0)->windowBits();
    }
};

Setup& setup() {
    static Setup s;
    return s;
}

void BM_ZLibEncoder(benchmark::State& state) {
    Bytes out;
    out.reserve(setup().compressed.size() * 2);
    for (auto _ : state) {
        out.clear();
        ZLibEncoder encoder(LEVEL, MAX_PENDING_RECORDS);
        for (unsigned int i = 0; i < NUM_FRAMES; ++i) encoder.encode(setup().frames[i], i, out);
        encoder.flush(out);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().framed.size()));
}

void BM_DeflateSameBytes(benchmark::State& state) {
    Bytes out(setup().framed.size() + 1024);
    for (auto _ : state) {
        z_stream s{};
        deflateInit2(&s, LEVEL, Z_DEFLATED, setup().window_bits, 8, Z_DEFAULT_STRATEGY);
        s.next_in = setup().framed.data();
        s.avail_in = uInt(setup().framed.size());
        s.next_out = out.data();
        s.avail_out = uInt(out.size());
        deflate(&s, Z_FULL_FLUSH);
        benchmark::DoNotOptimize(s.total_out);
        deflateEnd(&s);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().framed.size()));
}

void BM_ZLibDecoder(benchmark::State& state) {
    const Bytes& in = setup().compressed;
    for (auto _ : state) {
        ZLibDecoder decoder;
        unsigned int records = 0;
        for (std::size_t pos = 0; pos < in.size(); pos += CHUNK) {
            decoder.decode(in.data() + pos,
                           unsigned(std::min<std::size_t>(CHUNK, in.size() - pos)));
            unsigned int status = 0;
            while (decoder.getNextWithStatus(status).record) ++records;
        }
        if (records != NUM_FRAMES) state.SkipWithError("wrong number of records");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().framed.size()));
}

void BM_InflateSameBytes(benchmark::State& state) {
    const Bytes& in = setup().compressed;
    Bytes out(CHUNK * 4);
    for (auto _ : state) {
        z_stream s{};
        inflateInit2(&s, -15);
        s.next_in = const_cast<Bytef*>(in.data());
        s.avail_in = uInt(in.size());
        do {
            s.next_out = out.data();
            s.avail_out = uInt(out.size());
            inflate(&s, Z_SYNC_FLUSH);
        } while (s.avail_in != 0 || s.avail_out == 0);
        benchmark::DoNotOptimize(s.total_out);
        inflateEnd(&s);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(setup().framed.size()));
}

BENCHMARK(BM_ZLibEncoder)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeflateSameBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZLibDecoder)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateSameBytes)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    setup();
    return eodbench::runWithRatios(
        argc, argv,
        {{"BM_ZLibEncoder", "BM_DeflateSameBytes"}, {"BM_ZLibDecoder", "BM_InflateSameBytes"}});
}
