// The compression subsystem on the synthetic engine's frames and eye images, each figure
// beside its baselines from the same run: raw records (the bytes a raw file or the log files
// hold) and the zlib record stream.
//
// Counters: `ratio` is raw bytes / compressed bytes; bytes_per_second counts raw bytes;
// items_per_second counts frames (or images); `psnr` is the mean PSNR in dB of VP8 images
// against the originals; a seek's time is one seek plus reading the frame sought.

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <eod/eod.h>
#include <eod/io/compress/compressingfilewriter.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/zlibencoder.h>

#include "benchratios.h"
#include "testing/syntheticframe.h"
#include "testing/syntheticimage.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned int NUM_FRAMES = 600;
const unsigned int NUM_IMAGES = 120;
const unsigned int FRAMES_PER_HOUR = 60 * 60 * 60;
const unsigned int IMAGE_CONTAINER_FRAMES = 600;
const unsigned int FRAMES_PER_GROUP = 16;

const std::vector<boost::shared_ptr<EngineOutputData>>& frames() {
    static const std::vector<boost::shared_ptr<EngineOutputData>> f = [] {
        std::vector<boost::shared_ptr<EngineOutputData>> v;
        for (unsigned int n = 0; n < NUM_FRAMES; ++n) v.push_back(eodtesting::syntheticFrame(n));
        return v;
    }();
    return f;
}

const std::vector<boost::shared_ptr<ImageOutputData>>& images() {
    static const std::vector<boost::shared_ptr<ImageOutputData>> i = [] {
        std::vector<boost::shared_ptr<ImageOutputData>> v;
        for (unsigned int n = 0; n < NUM_IMAGES; ++n) v.push_back(eodtesting::syntheticEyeImage(n));
        return v;
    }();
    return i;
}

std::int64_t rawBytes(const Serializable& record) { return record.numTotalBytes(); }

std::unique_ptr<SerializableCompressorEncoder> encoderFor(const std::string& codec) {
    if (codec == "zlib") {
        return std::unique_ptr<SerializableCompressorEncoder>(new ZLibEncoder(6, 16));
    }
    return SerializableCompressorEncoderFactory::create(
        CompressionProfileRegistry::profile("compact").recordCodec.codec == codec
            ? CompressionProfileRegistry::profile("compact").recordCodec
            : CodecSettings(codec));
}

// Records without images: the whole frame sequence through one encoder, flushed after every
// group of frames as the container does ("zstd" is the "compact" profile's record codec). The zlib
// record stream runs as it is used on its own: flushed only when it chooses to.
void BM_Records(benchmark::State& state, const std::string& codec) {
    std::int64_t raw = 0;
    for (const auto& f : frames()) raw += rawBytes(*f);
    std::int64_t compressed = 0;
    Bytes out;
    for (auto _ : state) {
        if (codec == "copy") {
            compressed = 0;
            for (const auto& f : frames()) {
                out.clear();
                f->serialize(out);
                compressed += static_cast<std::int64_t>(out.size());
            }
            continue;
        }
        auto encoder = encoderFor(codec);
        compressed = 0;
        for (unsigned int n = 0; n < NUM_FRAMES; ++n) {
            out.clear();
            encoder->encode(*frames()[n], n, out);
            if (codec != "zlib" && (n + 1) % FRAMES_PER_GROUP == 0) encoder->flush(out);
            compressed += static_cast<std::int64_t>(out.size());
        }
        out.clear();
        encoder->flush(out);
        compressed += static_cast<std::int64_t>(out.size());
    }
    state.SetItemsProcessed(state.iterations() * NUM_FRAMES);
    state.SetBytesProcessed(state.iterations() * raw);
    state.counters["ratio"] = double(raw) / double(compressed);
}
BENCHMARK_CAPTURE(BM_Records, raw_copy, std::string("copy"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Records, compact_zstd, std::string("zstd"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Records, lz4, std::string("lz4"))->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Records, zlib_stream, std::string("zlib"))->Unit(benchmark::kMillisecond);

// Eye images one after another through one image stream; VP8 at the "compact" profile's
// settings. The PSNR comes from decoding what the measured encoder produced.
void BM_Images(benchmark::State& state, const std::string& codec) {
    const std::int64_t raw = rawBytes(*images()[0]);
    CodecSettings settings = CompressionProfileRegistry::profile("compact").imageCodecFor(
        codec == "vp8" ? IMAGE_FORMAT_GREY8 : -1);
    if (codec != "vp8") settings = CodecSettings(codec);
    std::unique_ptr<SerializableCompressorEncoder> encoder =
        codec == "zlib" ? encoderFor(codec) : SerializableCompressorEncoderFactory::create(settings);
    std::unique_ptr<SerializableCompressorDecoder> decoder =
        codec == "zlib" ? nullptr : SerializableCompressorDecoderFactory::create(codec);
    std::int64_t compressed = 0;
    std::int64_t count = 0;
    double psnr_sum = 0;
    unsigned int n = 0;
    Bytes out;
    for (auto _ : state) {
        out.clear();
        encoder->encode(*images()[n], n, out);
        if (codec == "zlib") encoder->flush(out);
        compressed += static_cast<std::int64_t>(out.size());
        ++count;
        if (codec == "vp8") {
            state.PauseTiming();
            decoder->decode(out.data(), static_cast<unsigned int>(out.size()));
            unsigned int status = 0;
            const DecoderData item = decoder->getNextWithStatus(status);
            psnr_sum += eodtesting::imagePsnr(*images()[n],
                                           dynamic_cast<const ImageOutputData&>(*item.record));
            state.ResumeTiming();
        }
        n = (n + 1) % NUM_IMAGES;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * raw);
    state.counters["ratio"] = double(raw * count) / double(compressed);
    if (codec == "vp8") state.counters["psnr"] = psnr_sum / count;
}
BENCHMARK_CAPTURE(BM_Images, vp8, std::string("vp8"))->Iterations(NUM_IMAGES * 2);
BENCHMARK_CAPTURE(BM_Images, lossless_image, std::string("lossless-image"))->Iterations(NUM_IMAGES);
BENCHMARK_CAPTURE(BM_Images, zlib_stream, std::string("zlib"))->Iterations(NUM_IMAGES);

// Seeking in a container: one hour of frames without images, and frames with eye images
// (whose seek cost does not grow with the length: the index leads to the key point).
std::string writeContainer(const std::string& name, unsigned int count, bool with_images) {
    const std::string path = "/tmp/eod-bench-" + name + ".eodc";
    CompressingFileWriter writer;
    writer.open(path, CompressionProfileRegistry::profile("compact"));
    for (unsigned int n = 0; n < count; ++n) {
        if (with_images) {
            boost::shared_ptr<EngineOutputData> frame(frames()[n % NUM_FRAMES]->clone());
            frame->typedSubObjectAddIfMissing<ImageCollectionOutputData>()->addImage(
                images()[n % NUM_IMAGES]);
            writer.writeFrame(*frame);
        } else {
            EngineOutputData& frame = *frames()[n % NUM_FRAMES];
            const unsigned int kept = frame.frameNum();
            frame.setFrameNum(n);
            writer.writeFrame(frame);
            frame.setFrameNum(kept);
        }
    }
    writer.close();
    return path;
}

void BM_Seek(benchmark::State& state, bool with_images) {
    static std::string paths[2];
    std::string& path = paths[with_images];
    const unsigned int count = with_images ? IMAGE_CONTAINER_FRAMES : FRAMES_PER_HOUR;
    if (path.empty()) path = writeContainer(with_images ? "images" : "hour", count, with_images);
    DecompressingFileReader reader;
    reader.open(path);
    unsigned int k = 0;
    for (auto _ : state) {
        // Frames around the middle, each one a different distance past its key point.
        reader.seekToFrame(count / 2 + (k++ * 7) % 60);
        benchmark::DoNotOptimize(reader.readFrame());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(BM_Seek, one_hour_records, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Seek, eye_images, true)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
