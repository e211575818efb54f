// The compression subsystem: record and image codecs made by name, compressor and
// decompressor, profiles, and the container file (round trips, seeking, torn and hostile
// files).

#include <eod/compressedserializabletoken.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/io/compress/compressingfilewriter.h>
#include <eod/io/compress/compressionerror.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/compress/serializablecompressor.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/compress/serializabledecompressor.h>
#include <eod/io/zlibcodecimpl.h>

#include <cmath>
#include <filesystem>
#include <map>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/bytestream.h"
#include "eod/io/compress/detail/framedcodec.h"
#include "recordtesting.h"
#include "testfiles.h"
#include "testing/syntheticframe.h"
#include "testing/syntheticimage.h"

namespace {

using namespace tq::eod;
using namespace tq::eod::io;
using eodtest::Bytes;
using eodtest::encode;
using Frame = boost::shared_ptr<EngineOutputData>;

// A default record of every registered type, then realistic frames.
std::vector<boost::shared_ptr<Serializable>> everyRecordType() {
    std::vector<boost::shared_ptr<Serializable>> records;
    for (int id = -128; id < 128; ++id) {
        boost::shared_ptr<Serializable> r = SerializableFactory::newObject(static_cast<char>(id));
        if (r) records.push_back(r);
    }
    for (unsigned int n = 0; n < 20; ++n) records.push_back(eodtesting::syntheticFrame(n * 7));
    return records;
}

// Decodes `bytes` in pieces of `step` bytes and returns the items as {tag, encoding}.
std::vector<std::pair<unsigned int, Bytes>> decodeAll(const std::string& codec, const Bytes& bytes,
                                                      std::size_t step) {
    std::unique_ptr<SerializableCompressorDecoder> decoder =
        SerializableCompressorDecoderFactory::create(codec);
    std::vector<std::pair<unsigned int, Bytes>> items;
    for (std::size_t pos = 0; pos < bytes.size(); pos += step) {
        const std::size_t n = std::min(step, bytes.size() - pos);
        decoder->decode(bytes.data() + pos, static_cast<unsigned int>(n));
        for (;;) {
            unsigned int status = 0;
            const DecoderData item = decoder->getNextWithStatus(status);
            if (status & Serializable::STATUS_NOT_ENOUGH_DATA) break;
            items.emplace_back(item.tag, item.record ? encode(*item.record) : Bytes());
        }
    }
    return items;
}

TEST(Codecs, EveryRecordTypeRoundTripsInAnyChunking) {
    const auto records = everyRecordType();
    for (const char* name : {"zlib", "zstd", "lz4", "lossless-image", "vp8"}) {
        SCOPED_TRACE(name);
        std::unique_ptr<SerializableCompressorEncoder> encoder =
            SerializableCompressorEncoderFactory::create(CodecSettings(name));
        Bytes bytes;
        for (std::size_t i = 0; i < records.size(); ++i) {
            encoder->encode(*records[i], static_cast<unsigned int>(1000 + i), bytes);
        }
        encoder->flush(bytes);
        for (std::size_t step : {bytes.size(), std::size_t(7), std::size_t(4096)}) {
            const auto items = decodeAll(name, bytes, step);
            ASSERT_EQ(items.size(), records.size());
            for (std::size_t i = 0; i < records.size(); ++i) {
                EXPECT_EQ(items[i].first, 1000 + i);
                EXPECT_EQ(items[i].second, encode(*records[i])) << "record " << i;
            }
        }
    }
}

TEST(Codecs, CompressorHandsOutRecordsTheDecompressorTakesBack) {
    SerializableCompressor compressor(CodecSettings("zstd"));
    SerializableDecompressor decompressor("zstd");
    EXPECT_FALSE(compressor.getNext());
    for (unsigned int n = 0; n < 5; ++n) {
        compressor.compress(*eodtesting::syntheticFrame(n), n);
        compressor.flush();
        const boost::shared_ptr<CompressedSerializable> chunk = compressor.getNext();
        ASSERT_TRUE(chunk);
        EXPECT_FALSE(compressor.getNext());
        // The chunk travels as a record like any other.
        const auto copy = eodtest::decodeViaFactory<CompressedSerializable>(encode(*chunk));
        ASSERT_TRUE(copy);
        decompressor.decompress(*copy);
        const boost::shared_ptr<Serializable> frame = decompressor.getNext();
        ASSERT_TRUE(frame);
        EXPECT_EQ(encode(*frame), encode(*eodtesting::syntheticFrame(n)));
        EXPECT_FALSE(decompressor.getNext());
    }
}

TEST(Codecs, FactoryErrors) {
    EXPECT_EQ(eodtest::thrownMessage<CompressionError>(
                  [] { SerializableCompressorEncoderFactory::create(CodecSettings("nope")); }),
              "unknown codec: nope");
    EXPECT_EQ(eodtest::thrownMessage<CompressionError>(
                  [] { SerializableCompressorDecoderFactory::create("nope"); }),
              "unknown codec: nope");
    EXPECT_USAGE_ERROR(SerializableCompressorEncoderFactory::create(CodecSettings("zstd", 20)),
                       "io/compress/zstdstream", "zstd level should be -1 or between 1 and 19");
    EXPECT_USAGE_ERROR(SerializableCompressorEncoderFactory::create(CodecSettings("lz4", 13)),
                       "io/compress/lz4stream", "lz4 level should be -1 or between 0 and 12");
    CodecSettings vp8("vp8");
    vp8.quality = 101;
    EXPECT_USAGE_ERROR(SerializableCompressorEncoderFactory::create(vp8), "io/compress/imagecodec",
                       "quality should be between 0 and 100");
    const std::vector<std::string> expected = {"lossless-image", "lz4", "vp8", "zlib", "zstd"};
    EXPECT_EQ(SerializableCompressorEncoderFactory::codecNames(), expected);
    EXPECT_EQ(SerializableCompressorDecoderFactory::codecNames(), expected);
}

// One frame of the zstd/lz4 stream: tag, CRC-32, length (little-endian), then the record.
Bytes framed(const Serializable& record, unsigned int tag, std::uint32_t crc_delta,
             std::uint32_t length_override = 0) {
    const Bytes body = encode(record);
    Bytes frame(12);
    tq::eod::detail::storeU32LE(frame.data(), tag);
    tq::eod::detail::storeU32LE(frame.data() + 4, ZLibCodecImpl::crc(body.data(), body.size()) + crc_delta);
    tq::eod::detail::storeU32LE(frame.data() + 8, length_override ? length_override
                                                        : static_cast<std::uint32_t>(body.size()));
    frame.insert(frame.end(), body.begin(), body.end());
    return frame;
}

TEST(Codecs, ZstdDecoderRejectsBadFramesAndRecovers) {
    const Frame record = eodtesting::syntheticFrame(3);
    struct Case {
        Bytes plain;
        const char* message;
    } cases[] = {{framed(*record, 1, 1), "ZstdDecoder::decode() - CRC mismatch"},
                 {framed(*record, 1, 0, (64u << 20) + 1),
                  "ZstdDecoder::decode() - record length exceeds the maximum"}};
    for (const Case& c : cases) {
        auto decoder = SerializableCompressorDecoderFactory::create("zstd");
        Bytes good;
        io::detail::zstdCompressOnce(framed(*record, 7, 0).data(), framed(*record, 7, 0).size(),
                                     3, good);
        Bytes bad;
        io::detail::zstdCompressOnce(c.plain.data(), c.plain.size(), 3, bad);
        decoder->decode(good.data(), static_cast<unsigned int>(good.size()));
        EXPECT_EQ(eodtest::serializableError([&] {
                      decoder->decode(bad.data(), static_cast<unsigned int>(bad.size()));
                  }),
                  c.message);
        decoder->decode(good.data(), static_cast<unsigned int>(good.size()));
        unsigned int status = 0;
        EXPECT_EQ(decoder->getNextWithStatus(status).tag, 7u);
        EXPECT_EQ(decoder->getNextWithStatus(status).tag, 7u);
        EXPECT_EQ(status, 0u);
    }
}

// A few compressed bytes that decompress to a million empty frames (12 zero bytes each: tag
// 0, CRC 0, length 0): the queue stays bounded while decoding, and draining it hands out
// every frame.
TEST(Codecs, FramedDecoderBoundsItsQueueAndLosesNoFrame) {
    const std::size_t frames = 1u << 20;
    const Bytes zeros(frames * io::detail::RecordFrameParser::FRAME_HEADER_BYTES, 0);
    struct Case {
        const char* name;
        std::unique_ptr<io::detail::ByteStreamCompressor> compressor;
        std::unique_ptr<io::detail::ByteStreamDecompressor> decompressor;
    } cases[] = {{"ZstdDecoder", io::detail::newZstdCompressor(3),
                  io::detail::newZstdDecompressor("ZstdDecoder::decode()")},
                 {"Lz4Decoder", io::detail::newLz4Compressor(0),
                  io::detail::newLz4Decompressor("Lz4Decoder::decode()")}};
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes bomb;
        c.compressor->write(zeros.data(), zeros.size(), bomb);
        c.compressor->flush(bomb);
        ASSERT_LT(bomb.size(), zeros.size() / 50);
        io::detail::FramedDecoder decoder(c.name, std::move(c.decompressor));
        decoder.decode(bomb.data(), static_cast<unsigned int>(bomb.size()));
        EXPECT_LE(decoder.numQueued(), io::detail::FramedDecoder::MAX_QUEUED_ITEMS +
                                           io::detail::ByteStreamDecompressor::MAX_STEP / 12);
        std::size_t taken = 0;
        for (;;) {
            unsigned int status = 0;
            const io::DecoderData item = decoder.getNextWithStatus(status);
            if (status & Serializable::STATUS_NOT_ENOUGH_DATA) break;
            ASSERT_EQ(item.tag, 0u);
            ASSERT_FALSE(item.record);
            ++taken;
        }
        EXPECT_EQ(taken, frames);
    }
}

TEST(ImageCodecs, LosslessIsExactForAnyGeometryAndVp8KeepsGeometry) {
    Bytes pixels(37 * 45);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 31);
    struct Case {
        unsigned int width, height, stride;
        int format;
    } cases[] = {{37, 45, 37, IMAGE_FORMAT_GREY8}, {33, 45, 37, IMAGE_FORMAT_GREY8},
                 {12, 45, 37, 7},                  {0, 0, 0, IMAGE_FORMAT_GREY8},
                 {1, 1, 1, IMAGE_FORMAT_GREY8}};
    for (const char* codec : {"lossless-image", "vp8"}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(codec) + " " + std::to_string(c.width));
            ImageOutputData image;
            image.setNewImage(c.width, c.height, c.stride, pixels.data(), c.format);
            image.setImageIdentifier("cam");
            auto encoder = SerializableCompressorEncoderFactory::create(CodecSettings(codec));
            Bytes bytes;
            encoder->encode(image, 5, bytes);
            const auto items = decodeAll(codec, bytes, bytes.size());
            ASSERT_EQ(items.size(), 1u);
            const bool lossy = std::string(codec) == "vp8" && c.format == IMAGE_FORMAT_GREY8 &&
                               c.width > 0;
            if (!lossy) {
                EXPECT_EQ(items[0].second, encode(image));
                continue;
            }
            const auto back = eodtest::decodeViaFactory<ImageOutputData>(items[0].second);
            ASSERT_TRUE(back);
            EXPECT_EQ(back->width(), c.width);
            EXPECT_EQ(back->height(), c.height);
            EXPECT_EQ(back->bytesPerLine(), c.stride);
            EXPECT_EQ(back->imageFormat(), c.format);
            EXPECT_EQ(back->imageIdentifier(), "cam");
        }
    }
}

TEST(ImageCodecs, Vp8EyeImagesKeepPsnrAbove38AcrossGeometryChanges) {
    auto encoder = SerializableCompressorEncoderFactory::create(CodecSettings("vp8"));
    auto decoder = SerializableCompressorDecoderFactory::create("vp8");
    for (unsigned int n = 0; n < 12; ++n) {
        boost::shared_ptr<ImageOutputData> image = eodtesting::syntheticEyeImage(n);
        if (n >= 8) {  // a smaller crop of the same scene: a new geometry mid-stream
            ImageOutputData crop;
            crop.setNewImage(320, 240, 640, image->rawData(), image->imageFormat());
            crop.setImageIdentifier(image->imageIdentifier());
            *image = crop;
        }
        Bytes bytes;
        encoder->encode(*image, n, bytes);
        decoder->decode(bytes.data(), static_cast<unsigned int>(bytes.size()));
        unsigned int status = 0;
        const DecoderData item = decoder->getNextWithStatus(status);
        const auto back = boost::dynamic_pointer_cast<ImageOutputData>(item.record);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->width(), image->width());
        EXPECT_GE(eodtesting::imagePsnr(*image, *back), 38.0) << "frame " << n;
    }
}

TEST(ImageCodecs, HostilePacketsAreErrorsNeverCrashes) {
    ImageOutputData image;
    const Bytes pixels(64 * 48, 100);
    image.setNewImage(64, 48, 64, pixels.data(), IMAGE_FORMAT_GREY8);
    for (const char* codec : {"lossless-image", "vp8"}) {
        auto encoder = SerializableCompressorEncoderFactory::create(CodecSettings(codec));
        Bytes bytes;
        encoder->encode(image, 1, bytes);
        // Every prefix waits or fails cleanly; every flipped byte fails or decodes.
        for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
            auto decoder = SerializableCompressorDecoderFactory::create(codec);
            decoder->decode(bytes.data(), static_cast<unsigned int>(cut));
            unsigned int status = 0;
            decoder->getNextWithStatus(status);
            EXPECT_TRUE(status & Serializable::STATUS_NOT_ENOUGH_DATA);
        }
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            Bytes flipped = bytes;
            flipped[i] ^= 0x5A;
            auto decoder = SerializableCompressorDecoderFactory::create(codec);
            try {
                decoder->decode(flipped.data(), static_cast<unsigned int>(flipped.size()));
            } catch (const SerializableError&) {
            }
        }
    }
    // A packet that declares a 4096 x 4096 VP8 image around a few bytes: refused.
    Bytes body;
    for (std::uint32_t v : {4096u, 4096u, 4096u, 1u}) tq::eod::detail::appendU32(body, v);
    body.push_back(0);
    body.insert(body.end(), {0x10, 0x02, 0x00, 0x9d, 0x01, 0x2a, 0x00, 0x10, 0x00, 0x10});
    Bytes packet = {2};
    tq::eod::detail::appendU32(packet, 0);
    tq::eod::detail::appendU32(packet, ZLibCodecImpl::crc(body.data(), body.size()));
    tq::eod::detail::appendU32(packet, static_cast<std::uint32_t>(body.size()));
    packet.insert(packet.end(), body.begin(), body.end());
    auto decoder = SerializableCompressorDecoderFactory::create("vp8");
    EXPECT_EQ(eodtest::serializableError([&] {
                  decoder->decode(packet.data(), static_cast<unsigned int>(packet.size()));
              }),
              "ImageDecoder::decode() - VP8 frame does not decode");
}

TEST(Profiles, BuiltInAndUserProfiles) {
    EXPECT_EQ(CompressionProfileRegistry::profile("compact").imageCodecFor(IMAGE_FORMAT_GREY8).codec,
              "vp8");
    EXPECT_EQ(CompressionProfileRegistry::profile("compact").imageCodecFor(3).codec,
              "lossless-image");
    EXPECT_EQ(CompressionProfileRegistry::profile("lossless").recordCodec.codec, "zstd");
    EXPECT_EQ(eodtest::thrownMessage<CompressionError>(
                  [] { CompressionProfileRegistry::profile("nope"); }),
              "unknown compression profile: nope");
    CompressionProfile mine = CompressionProfileRegistry::profile("lossless");
    mine.name = "mine";
    mine.recordCodec = CodecSettings("bogus");
    EXPECT_USAGE_ERROR(CompressionProfileRegistry::registerProfile(mine),
                       "io/compress/compressionprofileregistry", "unknown codec: bogus");
    EXPECT_FALSE(CompressionProfileRegistry::hasProfile("mine"));
    mine.recordCodec = CodecSettings("lz4");
    CompressionProfileRegistry::registerProfile(mine);
    EXPECT_EQ(CompressionProfileRegistry::profile("mine").recordCodec.codec, "lz4");
}

// ---- Container

Frame makeFrameWithImages(unsigned int n) {
    Frame frame = eodtesting::syntheticFrameWithImage(n);
    // A second, non-grey image with padding: lossless under every profile.
    boost::shared_ptr<ImageOutputData> colour(new ImageOutputData);
    Bytes pixels(30 * 20);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i + n);
    colour->setNewImage(9, 20, 30, pixels.data(), 24);
    colour->setImageIdentifier("scene");
    frame->imagesOutputData()->addImage(colour);
    return frame;
}

// Made once per number: the eye images take a while to draw. Callers only read them.
Frame frameWithImages(unsigned int n) {
    static std::map<unsigned int, Frame> made;
    Frame& frame = made[n];
    if (!frame) frame = makeFrameWithImages(n);
    return frame;
}

void writeFrames(const std::string& path, const std::string& profile, unsigned int count,
                 bool images, bool close = true) {
    CompressingFileWriter writer;
    writer.open(path, CompressionProfileRegistry::profile(profile));
    for (unsigned int n = 0; n < count; ++n) {
        writer.writeFrame(images ? *frameWithImages(n) : *eodtesting::syntheticFrame(n));
    }
    if (close) writer.close();
}

// The frame's encoding with the pixels of grey images left out.
Bytes withoutGreyPixels(const EngineOutputData& frame) {
    boost::shared_ptr<EngineOutputData> copy(frame.clone());
    auto images = copy->imagesOutputData();
    for (unsigned int i = 0; images && i < images->numImages(); ++i) {
        auto image = images->image(i);
        if (image->imageFormat() == IMAGE_FORMAT_GREY8) {
            Bytes zero(image->height() * image->bytesPerLine());
            image->setNewImage(image->width(), image->height(), image->bytesPerLine(), zero.data(),
                               image->imageFormat());
        }
    }
    return encode(*copy);
}

TEST(Container, FramesComeBackExactOrWithinPsnr) {
    eodtest::TempDir dir;
    for (const char* profile : {"lossless", "compact", "fast"}) {
        SCOPED_TRACE(profile);
        const std::string path = dir.file(std::string(profile) + ".eodc");
        writeFrames(path, profile, 40, true);
        DecompressingFileReader reader;
        reader.open(path);
        EXPECT_EQ(reader.profileName(), profile);
        EXPECT_EQ(reader.numFrames(), 40u);
        EXPECT_TRUE(reader.hasIndex());
        for (unsigned int n = 0; n < 40; ++n) {
            const Frame frame = reader.readFrame();
            ASSERT_TRUE(frame);
            const Frame original = frameWithImages(n);
            if (std::string(profile) == "compact") {
                EXPECT_EQ(withoutGreyPixels(*frame), withoutGreyPixels(*original));
                EXPECT_GE(eodtesting::imagePsnr(*original->imagesOutputData()->image(0),
                               *frame->imagesOutputData()->image(0)),
                          38.0);
            } else {
                EXPECT_EQ(encode(*frame), encode(*original)) << "frame " << n;
            }
        }
        EXPECT_FALSE(reader.readFrame());
        EXPECT_FALSE(reader.hasTornTail());
    }
}

TEST(Container, ExistingReadersWalkTheFileAsCompressedRecords) {
    eodtest::TempDir dir;
    const std::string path = dir.file("walk.eodc");
    writeFrames(path, "lossless", 5, true);
    const Bytes bytes = eodtest::readFile(path);
    int pos = 0;
    int items = 0;
    while (static_cast<std::size_t>(pos) < bytes.size()) {
        const auto record = SerializableFactory::newObject(bytes, pos);
        ASSERT_TRUE(boost::dynamic_pointer_cast<CompressedSerializable>(record));
        ++items;
    }
    EXPECT_GT(items, 5 * 3);
}

TEST(Container, SeekGivesTheSameFramesAsReadingOn) {
    eodtest::TempDir dir;
    const std::string path = dir.file("seek.eodc");
    writeFrames(path, "lossless", 75, false);
    for (bool indexed : {true, false}) {
        // One byte off the end spoils the trailer: the reader walks the key points instead.
        if (!indexed) std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
        DecompressingFileReader reader;
        reader.open(path);
        EXPECT_EQ(reader.hasIndex(), indexed);
        EXPECT_EQ(reader.numFrames(), 75u);
        for (unsigned int n : {74u, 0u, 31u, 30u, 29u, 60u}) {
            reader.seekToFrame(n);
            const Frame frame = reader.readFrame();
            ASSERT_TRUE(frame);
            EXPECT_EQ(encode(*frame), encode(*eodtesting::syntheticFrame(n)));
        }
        EXPECT_USAGE_ERROR(reader.seekToFrame(75), "io/compress/decompressingfilereader",
                           "frame ordinal out of range");
    }
}

TEST(Container, TornFileReadsUpToItsLastCompleteFrame) {
    eodtest::TempDir dir;
    const std::string whole = dir.file("whole.eodc");
    writeFrames(whole, "compact", 8, true, false);
    const Bytes bytes = eodtest::readFile(whole);
    const std::string torn = dir.file("torn.eodc");
    for (std::size_t cut = 40; cut < bytes.size(); cut += 997) {
        eodtest::writeFile(torn, Bytes(bytes.begin(), bytes.begin() + cut));
        DecompressingFileReader reader;
        reader.open(torn);
        unsigned int n = 0;
        while (const Frame frame = reader.readFrame()) {
            EXPECT_EQ(frame->frameNum(), eodtesting::syntheticFrame(n)->frameNum());
            ++n;
        }
        EXPECT_EQ(reader.numFrames(), n);
        EXPECT_TRUE(reader.hasTornTail() || cut == bytes.size());
    }
}

TEST(Container, DamageIsAnErrorWithItsOffset) {
    eodtest::TempDir dir;
    const std::string path = dir.file("good.eodc");
    writeFrames(path, "lossless", 3, true);
    const Bytes bytes = eodtest::readFile(path);
    const std::string bad = dir.file("bad.eodc");
    // Every single flipped byte: a clear CompressionError or frames still read; never a crash.
    for (std::size_t i = 0; i < bytes.size(); i += 1 + i / 16) {
        Bytes flipped = bytes;
        flipped[i] ^= 0xA5;
        eodtest::writeFile(bad, flipped);
        try {
            DecompressingFileReader reader;
            reader.open(bad);
            reader.numFrames();
            while (reader.readFrame()) {
            }
            reader.seekToFrame(reader.numFrames() - 1);
        } catch (const CompressionError& e) {
            EXPECT_NE(std::string(e.what()).find("DecompressingFileReader"), std::string::npos);
        } catch (const std::invalid_argument&) {
            // seekToFrame on a file whose damage left no frame
        }
    }
    eodtest::writeFile(bad, Bytes{1, 2, 3});
    DecompressingFileReader reader;
    EXPECT_EQ(eodtest::thrownMessage<CompressionError>([&] { reader.open(bad); }),
              "DecompressingFileReader: " + bad + ": offset 0: not a compressed item (object id 1)");
    EXPECT_FALSE(reader.isOpen());
}

TEST(Container, CollectionWithTokensOfItsOwnKeepsItsImagesInline) {
    eodtest::TempDir dir;
    const std::wstring path = (dir.path() / L"tokens.eodc").wstring();
    Frame frame = frameWithImages(1);
    frame->imagesOutputData()->addSubObject(
        boost::shared_ptr<Serializable>(new CompressedSerializableToken(1)));
    CompressingFileWriter writer;
    writer.open(path, CompressionProfileRegistry::profile("compact"));
    writer.writeFrame(*frame);
    writer.close();
    DecompressingFileReader reader;
    reader.open(path);
    const Frame back = reader.readFrame();
    ASSERT_TRUE(back);
    EXPECT_EQ(encode(*back), encode(*frame));
}

}  // namespace

namespace {

TEST(Container, FramesGoOutInGroupsAndAtFlush) {
    eodtest::TempDir dir;
    const std::string path = dir.file("open.eodc");
    CompressingFileWriter writer;
    CompressionProfile profile = CompressionProfileRegistry::profile("lossless");
    profile.framesPerGroup = 4;
    writer.open(path, profile);
    const auto framesOnDisk = [&] {
        DecompressingFileReader reader;
        reader.open(path);
        unsigned int n = 0;
        while (reader.readFrame()) ++n;
        EXPECT_FALSE(reader.hasIndex());
        return n;
    };
    for (unsigned int n = 0; n < 6; ++n) writer.writeFrame(*eodtesting::syntheticFrame(n));
    // Frames 4 and 5 wait for their group; the first group may still be in the stream buffer.
    EXPECT_LE(framesOnDisk(), 4u);
    writer.flush();
    EXPECT_EQ(framesOnDisk(), 6u);
    profile.framesPerGroup = 0;
    CompressingFileWriter other;
    EXPECT_USAGE_ERROR(other.open(dir.file("x.eodc"), profile),
                       "io/compress/compressionprofileregistry",
                       "framesPerGroup should be between 1 and 4096");
    EXPECT_FALSE(other.isOpen());
}

}  // namespace

namespace {

TEST(Container, LyingIndexIsAClearError) {
    eodtest::TempDir dir;
    const std::string path = dir.file("index.eodc");
    writeFrames(path, "lossless", 35, false);
    const Bytes bytes = eodtest::readFile(path);
    const std::uint64_t at = tq::eod::detail::loadU64(bytes.data() + bytes.size() - 16);
    // The index record: header of 3 or 7 bytes, payload length, kind 'I', segment count.
    const std::size_t count = at + (bytes[at + 1] == 0xFF && bytes[at + 2] == 0xFF ? 7 : 3) + 5;
    // 32-bit values overwritten: the segment count, the low half of the second key point's
    // offset, the low half of the index offset in the trailer.
    struct Case {
        std::size_t pos;
        std::uint32_t value;
        std::string reason;
    } cases[] = {{count, 0xFFFFFFFFu, "damaged index"},
                 {count + 4 + 16 + 12, 0, "index entry 1 out of order"},
                 {bytes.size() - 12, 0, "index offset out of range"}};
    for (const Case& c : cases) {
        Bytes bad = bytes;
        tq::eod::detail::storeU32(bad.data() + c.pos, c.value);
        eodtest::writeFile(path, bad);
        DecompressingFileReader reader;
        reader.open(path);
        const std::string message =
            eodtest::thrownMessage<CompressionError>([&] { reader.numFrames(); });
        EXPECT_NE(message.find(c.reason), std::string::npos) << message;
        // Frames still read in order.
        unsigned int n = 0;
        while (reader.readFrame()) ++n;
        EXPECT_EQ(n, 35u);
    }
}

}  // namespace
