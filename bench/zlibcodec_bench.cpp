// The zlib record stream against plain zlib on the same bytes, at the same level and window.
//
// Opaque records carry the bytes of typical ~1.5 KB frames under an object id nobody
// registers, so that encoding one is a copy and decoding one is a skip: the encoder against
// deflate of the same framed bytes with the same calls and flushes, the decoder against
// inflate of the same stream. What separates them is the codec itself (framing, CRC,
// buffers).
//
// Typical frames of the synthetic engine then show the whole path: the encoder against
// serialising plus deflate, the decoder against inflate plus rebuilding the records from
// memory. Prints each path's rate as a fraction of its baseline's.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <eod/eod.h>

#include "benchratios.h"
#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"
#include "testing/syntheticframe.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned int NUM_RECORDS = 5000;
const unsigned int NUM_DISTINCT_FRAMES = 64;
const int LEVEL = 6;
const int MAX_PENDING_RECORDS = 16;
const unsigned int CHUNK = 65536;

// Given bytes under an unregistered id: written as they are, skipped by every reader.
class OpaqueRecord : public Serializable {
  public:
    static constexpr char THIS_OBJECT_ID = 50;

    explicit OpaqueRecord(Bytes bytes) : _bytes(std::move(bytes)) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    unsigned int numDataBytes() const override { return static_cast<unsigned int>(_bytes.size()); }
    OpaqueRecord* clone() const override { return new OpaqueRecord(*this); }
    void printLine(std::ostream& os) const override {
        detail::TextLine line(os);
        detail::Columns(os) << _bytes.size();
    }
    void printHeader(std::ostream& os) const override {
        detail::TextLine line(os);
        detail::Columns(os) << "BYTES";
    }

  protected:
    void appendBuffer(Bytes& buffer) const override {
        detail::appendRaw(buffer, _bytes.data(), _bytes.size());
    }
    void readFromBuffer(const Bytes& buffer, int& read_pos) override {
        detail::readRaw(buffer, read_pos, _bytes.data(), _bytes.size());
    }

  private:
    Bytes _bytes;
};

// One set of records with what the encoder makes of it.
struct Stream {
    std::vector<const Serializable*> records;  // NUM_RECORDS, cycling through a few
    Bytes framed;                  // the uncompressed stream: 12-byte header, then the record
    std::vector<std::size_t> ends;  // where each record's frame ends in `framed`
    Bytes compressed;

    void encode() {
        ZLibEncoder encoder(LEVEL, MAX_PENDING_RECORDS);
        for (unsigned int i = 0; i < NUM_RECORDS; ++i) {
            encoder.encode(*records[i], i, compressed);
            ends.push_back((ends.empty() ? 0 : ends.back()) + ZLibEncoder::FRAME_HEADER_BYTES +
                           records[i]->numTotalBytes());
        }
        encoder.flush(compressed);
        // An independent inflater gives back the framed stream that the encoder compressed.
        framed.resize(ends.back());
        z_stream s{};
        inflateInit2(&s, -15);
        s.next_in = compressed.data();
        s.avail_in = uInt(compressed.size());
        s.next_out = framed.data();
        s.avail_out = uInt(framed.size());
        inflate(&s, Z_SYNC_FLUSH);
        if (s.avail_out != 0) std::abort();
        inflateEnd(&s);
    }
};

struct Setup {
    std::vector<boost::shared_ptr<EngineOutputData>> frames;
    std::vector<OpaqueRecord> opaque;
    Stream frame_stream;
    Stream opaque_stream;
    int window_bits = 0;

    Setup() {
        for (unsigned int i = 0; i < NUM_DISTINCT_FRAMES; ++i) {
            frames.push_back(eodtesting::syntheticFrame(i));
            Bytes bytes;
            frames.back()->serialize(bytes);
            opaque.emplace_back(bytes);
        }
        for (unsigned int i = 0; i < NUM_RECORDS; ++i) {
            frame_stream.records.push_back(frames[i % NUM_DISTINCT_FRAMES].get());
            opaque_stream.records.push_back(&opaque[i % NUM_DISTINCT_FRAMES]);
        }
        frame_stream.encode();
        opaque_stream.encode();
        window_bits = std::unique_ptr<ZLibCodecImpl>(ZLibCodecImpl::newDeflater(LEVEL, 0))->windowBits();
    }
};

Setup& setup() {
    static Setup s;
    return s;
}

void countRecords(benchmark::State& state, const Stream& stream) {
    state.SetItemsProcessed(int64_t(state.iterations()) * NUM_RECORDS);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(stream.framed.size()));
}

void encodeAll(benchmark::State& state, const Stream& stream) {
    Bytes out;
    out.reserve(stream.compressed.size() * 2);
    for (auto _ : state) {
        out.clear();
        ZLibEncoder encoder(LEVEL, MAX_PENDING_RECORDS);
        for (unsigned int i = 0; i < NUM_RECORDS; ++i) encoder.encode(*stream.records[i], i, out);
        encoder.flush(out);
    }
    countRecords(state, stream);
}

// Deflate fed as the encoder feeds it: one call per framed record, and a full flush after
// more than MAX_PENDING_RECORDS records that gave no output, and at the end. `serialize`
// also encodes each record, the work the encoder cannot avoid.
void deflateAll(benchmark::State& state, const Stream& stream, bool serialize) {
    Bytes out(stream.framed.size() + 1024);
    Bytes record;
    for (auto _ : state) {
        z_stream s{};
        deflateInit2(&s, LEVEL, Z_DEFLATED, setup().window_bits, 8, Z_DEFAULT_STRATEGY);
        s.next_out = out.data();
        s.avail_out = uInt(out.size());
        std::size_t begin = 0;
        unsigned int pending = 0;
        for (unsigned int i = 0; i < NUM_RECORDS; ++i) {
            if (serialize) {
                record.clear();
                stream.records[i]->serialize(record);
                benchmark::DoNotOptimize(record.data());
            }
            const Bytef* before = s.next_out;
            s.next_in = const_cast<Bytef*>(stream.framed.data() + begin);
            s.avail_in = uInt(stream.ends[i] - begin);
            deflate(&s, Z_NO_FLUSH);
            begin = stream.ends[i];
            if (s.next_out != before) {
                pending = 0;
            } else if (++pending > unsigned(MAX_PENDING_RECORDS)) {
                deflate(&s, Z_FULL_FLUSH);
                pending = 0;
            }
        }
        deflate(&s, Z_FULL_FLUSH);
        benchmark::DoNotOptimize(s.total_out);
        deflateEnd(&s);
    }
    countRecords(state, stream);
}

void decodeAll(benchmark::State& state, const Stream& stream) {
    const Bytes& in = stream.compressed;
    for (auto _ : state) {
        ZLibDecoder decoder;
        unsigned int records = 0;
        for (std::size_t pos = 0; pos < in.size(); pos += CHUNK) {
            decoder.decode(in.data() + pos,
                           unsigned(std::min<std::size_t>(CHUNK, in.size() - pos)));
            unsigned int status = 0;
            for (;;) {
                const DecoderData item = decoder.getNextWithStatus(status);
                if (status & Serializable::STATUS_NOT_ENOUGH_DATA) break;
                benchmark::DoNotOptimize(item.record.get());
                ++records;
            }
        }
        if (records != NUM_RECORDS) state.SkipWithError("wrong number of records");
    }
    countRecords(state, stream);
}

// Inflate of the same stream in the same chunks; `rebuild` also rebuilds every record from
// the inflated bytes, the work the decoder cannot avoid.
void inflateAll(benchmark::State& state, const Stream& stream, bool rebuild) {
    const Bytes& in = stream.compressed;
    Bytes out(stream.framed.size());
    for (auto _ : state) {
        z_stream s{};
        inflateInit2(&s, -15);
        s.next_out = out.data();
        s.avail_out = uInt(out.size());
        for (std::size_t pos = 0; pos < in.size(); pos += CHUNK) {
            s.next_in = const_cast<Bytef*>(in.data() + pos);
            s.avail_in = uInt(std::min<std::size_t>(CHUNK, in.size() - pos));
            inflate(&s, Z_SYNC_FLUSH);
        }
        benchmark::DoNotOptimize(s.total_out);
        inflateEnd(&s);
        if (!rebuild) continue;
        std::size_t begin = 0;
        for (std::size_t end : stream.ends) {
            int read_pos = int(begin + ZLibEncoder::FRAME_HEADER_BYTES);
            benchmark::DoNotOptimize(SerializableFactory::newObject(out, read_pos));
            begin = end;
        }
    }
    countRecords(state, stream);
}

void BM_ZLibEncoderOpaque(benchmark::State& state) { encodeAll(state, setup().opaque_stream); }
void BM_DeflateOpaque(benchmark::State& state) { deflateAll(state, setup().opaque_stream, false); }
void BM_ZLibDecoderOpaque(benchmark::State& state) { decodeAll(state, setup().opaque_stream); }
void BM_InflateOpaque(benchmark::State& state) { inflateAll(state, setup().opaque_stream, false); }
void BM_ZLibEncoderFrames(benchmark::State& state) { encodeAll(state, setup().frame_stream); }
void BM_SerializeAndDeflateFrames(benchmark::State& state) {
    deflateAll(state, setup().frame_stream, true);
}
void BM_ZLibDecoderFrames(benchmark::State& state) { decodeAll(state, setup().frame_stream); }
void BM_InflateAndRebuildFrames(benchmark::State& state) {
    inflateAll(state, setup().frame_stream, true);
}

BENCHMARK(BM_ZLibEncoderOpaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DeflateOpaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZLibDecoderOpaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateOpaque)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZLibEncoderFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SerializeAndDeflateFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ZLibDecoderFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InflateAndRebuildFrames)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    setup();
    return benchratios::runWithRatios(
        argc, argv,
        {{"ZLibEncoder / deflate, opaque records", "BM_ZLibEncoderOpaque", "BM_DeflateOpaque"},
         {"ZLibDecoder / inflate, opaque records", "BM_ZLibDecoderOpaque", "BM_InflateOpaque"},
         {"ZLibEncoder / serialize and deflate, frames", "BM_ZLibEncoderFrames",
          "BM_SerializeAndDeflateFrames"},
         {"ZLibDecoder / inflate and rebuild, frames", "BM_ZLibDecoderFrames",
          "BM_InflateAndRebuildFrames"}},
        "records of about " +
            std::to_string(setup().frame_stream.framed.size() / NUM_RECORDS) +
            " bytes framed\n");
}
