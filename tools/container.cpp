// The compressed container in the command: `eod compress --profile NAME RECORDING OUT`,
// `eod decompress CONTAINER OUT` (a raw record file of the frames) and
// `eod demo --images` (a synthetic session with eye images through the "compact" profile).
// Output goes to a temporary name first and takes OUT's name only when it is complete, so a
// failed run leaves nothing behind.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>

#include <eod/compressedserializable.h>
#include <eod/eoderror.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/io/compress/compressingfilewriter.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/filewriter.h>

#include "commands.h"
#include "framesource.h"
#include "testing/syntheticimage.h"
#include "temporaryoutput.h"
#include "toolerror.h"

namespace eodtool {

namespace {

using tq::eod::EngineOutputData;
using Frame = boost::shared_ptr<EngineOutputData>;
namespace fs = std::filesystem;

// The frame's encoding with its images' pixels left out: what VP8 must keep exactly.
std::vector<unsigned char> withoutPixels(const EngineOutputData& frame) {
    Frame copy(frame.clone());
    if (auto images = copy->imagesOutputData()) {
        for (unsigned int i = 0; i < images->numImages(); ++i) {
            auto image = images->image(i);
            std::vector<unsigned char> zero(image->height() * std::size_t(image->bytesPerLine()));
            image->setNewImage(image->width(), image->height(), image->bytesPerLine(),
                               zero.data(), image->imageFormat());
        }
    }
    std::vector<unsigned char> bytes;
    copy->serialize(bytes);
    return bytes;
}

}  // namespace

int runCompressContainer(const ConvertOptions& options) {
    const std::unique_ptr<FrameSource> source = openRecording(options.in);
    TemporaryOutput out(options.out);
    orToolError(options.out, [&] {
        tq::eod::io::CompressingFileWriter writer;
        writer.open(out.path(),
                    tq::eod::io::CompressionProfileRegistry::profile(options.profile));
        while (const Frame frame = source->next()) writer.writeFrame(*frame);
        writer.close();
    });
    out.commit();
    return 0;
}

int runDecompressContainer(const ConvertOptions& options) {
    TemporaryOutput out(options.out);
    orToolError(options.in, [&] {
        tq::eod::io::DecompressingFileReader reader;
        reader.open(options.in);
        tq::eod::io::FileWriter writer;
        if (!writer.open(out.path())) throw ToolError(options.out + ": cannot create file");
        while (const Frame frame = reader.readFrame()) writer.write(*frame);
        if (reader.hasTornTail()) {
            throw ToolError(options.in + ": the file ends inside a frame (torn tail)");
        }
        writer.close();
    });
    out.commit();
    return 0;
}

int runDemoImages(const DemoOptions& options) {
    using Clock = std::chrono::steady_clock;
    std::error_code ec;
    fs::create_directories(options.out, ec);
    if (ec) throw ToolError(options.out + ": " + ec.message());
    const std::string path = (fs::path(options.out) / "demo.eodc").string();
    std::uint64_t raw_bytes = 0;
    double encode_seconds = 0;
    double decode_seconds = 0;
    double worst_psnr = 99.0;
    orToolError(path, [&] {
        {
            tq::eod::io::CompressingFileWriter writer;
            writer.open(path, tq::eod::io::CompressionProfileRegistry::profile("compact"));
            for (unsigned int n = 0; n < options.frames; ++n) {
                const Frame frame = eodtesting::syntheticFrameWithImage(n);
                raw_bytes += frame->numTotalBytes();
                const Clock::time_point start = Clock::now();
                writer.writeFrame(*frame);
                encode_seconds += std::chrono::duration<double>(Clock::now() - start).count();
            }
            writer.close();
        }
        tq::eod::io::DecompressingFileReader reader;
        reader.open(path);
        for (unsigned int n = 0;; ++n) {
            const Clock::time_point start = Clock::now();
            const Frame frame = reader.readFrame();
            decode_seconds += std::chrono::duration<double>(Clock::now() - start).count();
            if (!frame) {
                if (n != options.frames) {
                    throw ToolError(path + ": " + std::to_string(n) + " of " +
                                    std::to_string(options.frames) + " frames came back");
                }
                break;
            }
            const Frame original = eodtesting::syntheticFrameWithImage(n);
            if (withoutPixels(*frame) != withoutPixels(*original)) {
                throw ToolError(path + ": frame " + std::to_string(n) +
                                " did not come back as it was recorded");
            }
            worst_psnr =
                std::min(worst_psnr, eodtesting::imagePsnr(*original->imagesOutputData()->image(0),
                                               *frame->imagesOutputData()->image(0)));
        }
    });
    const std::uint64_t file_bytes = fs::file_size(path);
    std::cout << "eod demo: " << options.frames << " synthetic frames with 640x480 eye images"
              << " compressed into " << path << " (profile \"compact\") and read back; every"
              << " frame came back equal apart from the VP8 pixels\n";
    std::cout << "raw: " << raw_bytes << " bytes; container: " << file_bytes << " bytes ("
              << std::fixed << std::setprecision(1) << double(raw_bytes) / file_bytes
              << "x smaller); lowest image PSNR " << worst_psnr << " dB\n";
    std::cout << std::setprecision(0) << "encode: " << options.frames / std::max(encode_seconds, 1e-9)
              << " frames/s; decode: " << options.frames / std::max(decode_seconds, 1e-9)
              << " frames/s\n";
    return 0;
}

}  // namespace eodtool
