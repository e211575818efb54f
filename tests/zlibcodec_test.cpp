#include <eod/eod.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;
using eodtest::encode;
using eodtest::NOT_ENOUGH_DATA;
using eodtest::UNKNOWN_ID;

namespace {

using Bytes = std::vector<unsigned char>;
using RecordPtr = boost::shared_ptr<Serializable>;

const std::size_t BLOCK_SIZES[] = {1, 2, 3, 5, 7, 13, 32, 1024};
Bytes randomBytes(std::size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    Bytes out(n);
    for (unsigned char& b : out) b = static_cast<unsigned char>(gen());
    return out;
}

// Frames with tokens, and payload records from empty to larger than the decoder's inflate
// step, some compressible and some random.
std::vector<RecordPtr> sampleRecords() {
    std::vector<RecordPtr> records;
    for (unsigned int i = 0; i < 20; ++i) {
        boost::shared_ptr<EngineOutputData> frame(new EngineOutputData());
        frame->setFrameNum(1000 + i);
        for (unsigned int t = 0; t < i % 4; ++t) {
            frame->addSubObject(RecordPtr(new CompressedSerializableToken(int(i * 10 + t))));
        }
        records.push_back(frame);
    }
    records.push_back(RecordPtr(new CompressedSerializable()));
    records.push_back(RecordPtr(new CompressedSerializable(randomBytes(1, 1))));
    records.push_back(RecordPtr(new CompressedSerializable(randomBytes(5000, 2))));
    records.push_back(RecordPtr(new CompressedSerializable(Bytes(70000, 0x5A))));
    records.push_back(RecordPtr(new CompressedSerializable(randomBytes(300000, 3))));
    return records;
}

// The uncompressed stream: each record framed as tag, CRC-32, length, all little-endian.
Bytes frameOf(unsigned int tag, const Bytes& record, std::uint32_t crc) {
    Bytes out;
    detail::appendU32LE(out, tag);
    detail::appendU32LE(out, crc);
    detail::appendU32LE(out, static_cast<std::uint32_t>(record.size()));
    out.insert(out.end(), record.begin(), record.end());
    return out;
}

Bytes frameOf(unsigned int tag, const Bytes& record) {
    return frameOf(tag, record,
                   static_cast<std::uint32_t>(crc32(0, record.data(), uInt(record.size()))));
}

Bytes encodeAll(const std::vector<RecordPtr>& records, int level, int max_pending) {
    ZLibEncoder encoder(level, max_pending);
    Bytes out;
    for (std::size_t i = 0; i < records.size(); ++i) encoder.encode(*records[i], 7 * i, out);
    encoder.flush(out);
    return out;
}

// Plain zlib: every chunk in `chunks` is one piece of input followed by `flush`; with
// Z_FINISH only the last chunk finishes the stream and the others are not flushed.
Bytes deflateRaw(const std::vector<Bytes>& chunks, int level, int window_bits, int flush) {
    z_stream s{};
    EXPECT_EQ(deflateInit2(&s, level, Z_DEFLATED, window_bits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    Bytes out;
    unsigned char buf[4096];
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const int mode = flush != Z_FINISH || i + 1 == chunks.size() ? flush : Z_NO_FLUSH;
        s.next_in = const_cast<Bytef*>(chunks[i].data());
        s.avail_in = uInt(chunks[i].size());
        int rc = Z_OK;
        do {
            s.next_out = buf;
            s.avail_out = sizeof buf;
            rc = deflate(&s, mode);
            out.insert(out.end(), buf, buf + (sizeof buf - s.avail_out));
        } while (rc == Z_OK && (s.avail_out == 0 || s.avail_in != 0));
        EXPECT_NE(rc, Z_STREAM_ERROR);
    }
    deflateEnd(&s);
    return out;
}

Bytes inflateRaw(const Bytes& in) {
    z_stream s{};
    EXPECT_EQ(inflateInit2(&s, -15), Z_OK);
    s.next_in = const_cast<Bytef*>(in.data());
    s.avail_in = uInt(in.size());
    Bytes out;
    unsigned char buf[4096];
    int rc = Z_OK;
    do {
        s.next_out = buf;
        s.avail_out = sizeof buf;
        rc = inflate(&s, Z_SYNC_FLUSH);
        out.insert(out.end(), buf, buf + (sizeof buf - s.avail_out));
    } while (rc == Z_OK && (s.avail_in != 0 || s.avail_out == 0));
    EXPECT_TRUE(rc == Z_OK || rc == Z_BUF_ERROR) << rc;
    inflateEnd(&s);
    return out;
}

std::vector<DecoderData> drain(ZLibDecoder& decoder) {
    std::vector<DecoderData> items;
    for (;;) {
        unsigned int status = 0;
        DecoderData item = decoder.getNextWithStatus(status);
        if (status & NOT_ENOUGH_DATA) return items;
        items.push_back(item);
    }
}

std::vector<DecoderData> decodeInBlocks(const Bytes& in, std::size_t block) {
    ZLibDecoder decoder;
    for (std::size_t pos = 0; pos < in.size(); pos += block) {
        decoder.decode(in.data() + pos, unsigned(std::min(block, in.size() - pos)));
    }
    return drain(decoder);
}

void expectRecords(const std::vector<DecoderData>& items, const std::vector<RecordPtr>& records,
                   unsigned int tag_step = 7) {
    ASSERT_EQ(items.size(), records.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(items[i].tag, tag_step * i);
        ASSERT_TRUE(items[i].record);
        EXPECT_EQ(encode(*items[i].record), encode(*records[i]));
    }
}

}  // namespace

TEST(ByteCodec, LittleEndianHelpers) {
    Bytes out;
    detail::appendU32LE(out, 0x01020304u);
    EXPECT_EQ(out, (Bytes{0x04, 0x03, 0x02, 0x01}));
    EXPECT_EQ(detail::loadU32LE(out.data()), 0x01020304u);
    unsigned char b[4];
    detail::storeU32LE(b, 0xFFFFFFFEu);
    EXPECT_EQ(Bytes(b, b + 4), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(ZLibCodecImpl, CrcIsZlibsCrc32) {
    const std::string check = "123456789";
    EXPECT_EQ(ZLibCodecImpl::crc(reinterpret_cast<const unsigned char*>(check.data()), 9),
              0xCBF43926u);
    EXPECT_EQ(ZLibCodecImpl::crc(nullptr, 0), 0u);
}

TEST(ZLibCodecImpl, SmallestWindowTheLinkedZlibAccepts) {
    const boost::scoped_ptr<ZLibCodecImpl> deflater(ZLibCodecImpl::newDeflater(6, 0));
    z_stream probe{};
    const bool accepts_256_bytes =
        deflateInit2(&probe, 6, Z_DEFLATED, -8, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    if (accepts_256_bytes) deflateEnd(&probe);
    EXPECT_EQ(deflater->windowBits(), accepts_256_bytes ? -8 : -9);
    const boost::scoped_ptr<ZLibCodecImpl> inflater(ZLibCodecImpl::newInflater(1));
    EXPECT_EQ(inflater->windowBits(), -15);
}

TEST(ZLibEncoder, UsageErrors) {
    const struct {
        int level, max_pending;
        const char* reason;
    } cases[] = {{10, 0, "level should be -1 or between 0 and 9"},
                 {-2, 0, "level should be -1 or between 0 and 9"},
                 {6, -1, "maxPendingRecords is negative"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        try {
            ZLibEncoder encoder(c.level, c.max_pending);
            FAIL();
        } catch (const std::invalid_argument& e) {
            EXPECT_TRUE(eodtest::isUsageError(e.what(), "io/zlibencoder", c.reason));
        }
    }
}

TEST(ZLibEncoder, FrameIsTagCrcLengthLittleEndianThenRecord) {
    EngineOutputData frame;
    frame.setFrameNum(1000);
    ZLibEncoder encoder(6, 0);
    Bytes out;
    encoder.encode(frame, 0xA1B2C3D4u, out);
    encoder.flush(out);
    const Bytes record = encode(frame);
    const std::uint32_t crc = crc32(0, record.data(), uInt(record.size()));
    Bytes expected = {0xD4,
                      0xC3,
                      0xB2,
                      0xA1,
                      static_cast<unsigned char>(crc),
                      static_cast<unsigned char>(crc >> 8),
                      static_cast<unsigned char>(crc >> 16),
                      static_cast<unsigned char>(crc >> 24),
                      static_cast<unsigned char>(record.size()),
                      0,
                      0,
                      0};
    expected.insert(expected.end(), record.begin(), record.end());
    EXPECT_EQ(inflateRaw(out), expected);
}

TEST(ZLibEncoder, IndependentInflaterReadsTheWholeStream) {
    const std::vector<RecordPtr> records = sampleRecords();
    Bytes expected;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const Bytes f = frameOf(unsigned(7 * i), encode(*records[i]));
        expected.insert(expected.end(), f.begin(), f.end());
    }
    for (int level : {0, 1, 6, 9}) {
        SCOPED_TRACE(level);
        EXPECT_EQ(inflateRaw(encodeAll(records, level, 3)), expected);
    }
}

TEST(ZLibEncoder, PythonZlibReadsTheFrames) {
    if (std::system("python3 -c 'import zlib' >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "python3 not available";
    }
    const std::vector<RecordPtr> records = sampleRecords();
    const Bytes compressed = encodeAll(records, 6, 2);
    const std::filesystem::path dir = std::filesystem::temp_directory_path();
    const std::string stem = "eod_zlib_" + std::to_string(getpid());
    const std::filesystem::path data_path = dir / (stem + ".bin");
    const std::filesystem::path script_path = dir / (stem + ".py");
    std::ofstream(data_path, std::ios::binary)
        .write(reinterpret_cast<const char*>(compressed.data()),
               std::streamsize(compressed.size()));
    std::ofstream(script_path)
        << "import struct,sys,zlib\n"
           "d=zlib.decompressobj(-15).decompress(open(sys.argv[1],'rb').read())\n"
           "p=0\n"
           "while p<len(d):\n"
           " t,c,n=struct.unpack_from('<III',d,p);r=d[p+12:p+12+n];p+=12+n\n"
           " print(t,n,int(zlib.crc32(r)==c and len(r)==n))\n";
    FILE* pipe = popen(("python3 " + script_path.string() + " " + data_path.string()).c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    char line[256];
    while (std::fgets(line, sizeof line, pipe)) output += line;
    EXPECT_EQ(pclose(pipe), 0);
    std::filesystem::remove(data_path);
    std::filesystem::remove(script_path);
    std::ostringstream expected;
    for (std::size_t i = 0; i < records.size(); ++i) {
        expected << 7 * i << ' ' << records[i]->numTotalBytes() << " 1\n";
    }
    EXPECT_EQ(output, expected.str());
}

TEST(ZLibEncoder, FlushBeforeAnyRecordEmitsNothing) {
    ZLibEncoder encoder(6, 10);
    Bytes out;
    encoder.flush(out);
    EXPECT_TRUE(out.empty());
    encoder.encode(EngineOutputData(), 1, out);
    encoder.flush(out);
    const std::size_t after_first_flush = out.size();
    EXPECT_GT(after_first_flush, 0u);
    encoder.flush(out);
    EXPECT_EQ(out.size(), after_first_flush) << "a repeated flush adds nothing";
}

TEST(ZLibEncoder, SmallRecordsWaitUntilMoreThanMaxPending) {
    for (int max_pending : {0, 1, 3}) {
        SCOPED_TRACE(max_pending);
        ZLibEncoder encoder(6, max_pending);
        EngineOutputData frame;
        for (int i = 0; i <= max_pending; ++i) {
            Bytes out;
            encoder.encode(frame, unsigned(i), out);
            // Each chunk ends on a full flush, so it decodes completely on its own.
            EXPECT_EQ(out.empty(), i < max_pending) << "record " << i;
            if (i == max_pending) {
                EXPECT_EQ(decodeInBlocks(out, 1024).size(), unsigned(i + 1));
            }
        }
    }
}

TEST(ZLibEncoder, DisabledRecordIsRefusedAndTheStreamGoesOn) {
    ZLibEncoder encoder(6, 0);
    Bytes out;
    EngineOutputData off;
    off.setSerializeEnabled(false);
    EXPECT_THROW(encoder.encode(off, 1, out), SerializableError);
    EXPECT_TRUE(out.empty());
    const std::vector<RecordPtr> records = {RecordPtr(new EngineOutputData())};
    encoder.encode(*records[0], 0, out);
    expectRecords(decodeInBlocks(out, 1024), records);
}

// The codec itself carries records of any size: a frame of three 4K colour images.
TEST(ZLibCodec, SeventyFiveMegabyteFrameRoundTrips) {
    const unsigned int width = 3840, height = 2160, line = width * 3;
    Bytes pixels(std::size_t(line) * height);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i / 4093);
    const boost::shared_ptr<ImageCollectionOutputData> images(new ImageCollectionOutputData());
    for (const char* camera : {"left", "centre", "right"}) {
        boost::shared_ptr<ImageOutputData> image(new ImageOutputData());
        image->setNewImage(width, height, line, pixels.data(), 1);
        image->setImageIdentifier(camera);
        ASSERT_TRUE(images->addImage(image));
    }
    EngineOutputData frame;
    frame.setFrameNum(7);
    frame.addSubObject(images);
    ASSERT_GT(frame.numTotalBytes(), 74000000u);

    ZLibEncoder encoder(1, 0);
    Bytes out;
    encoder.encode(frame, 3, out);
    encoder.flush(out);
    const std::vector<DecoderData> items = decodeInBlocks(out, 1 << 20);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].tag, 3u);
    ASSERT_TRUE(items[0].record);
    EXPECT_TRUE(encode(*items[0].record) == encode(frame));
}

TEST(ZLibDecoder, SameRecordsInEveryChunking) {
    const std::vector<RecordPtr> records = sampleRecords();
    for (int max_pending : {0, 5}) {
        const Bytes compressed = encodeAll(records, 6, max_pending);
        for (std::size_t block : BLOCK_SIZES) {
            SCOPED_TRACE(testing::Message() << "max_pending " << max_pending << " block " << block);
            expectRecords(decodeInBlocks(compressed, block), records);
        }
    }
}

TEST(ZLibDecoder, ReadsIndependentDeflatersAtOtherLevelsAndWindows) {
    const std::vector<RecordPtr> records = sampleRecords();
    std::vector<Bytes> frames;
    for (std::size_t i = 0; i < records.size(); ++i) {
        frames.push_back(frameOf(unsigned(7 * i), encode(*records[i])));
    }
    for (int level : {0, 1, 9}) {
        for (int window : {-9, -12, -15}) {
            const Bytes compressed = deflateRaw(frames, level, window, Z_FULL_FLUSH);
            for (std::size_t block : {std::size_t(1), std::size_t(13), std::size_t(1024)}) {
                SCOPED_TRACE(testing::Message()
                             << "level " << level << " window " << window << " block " << block);
                expectRecords(decodeInBlocks(compressed, block), records);
            }
        }
    }
}

TEST(ZLibDecoder, StreamAfterAFinishedStreamIsReadToo) {
    const std::vector<RecordPtr> records = sampleRecords();
    std::vector<Bytes> first, second;
    for (std::size_t i = 0; i < records.size(); ++i) {
        (i < 10 ? first : second).push_back(frameOf(unsigned(7 * i), encode(*records[i])));
    }
    Bytes compressed = deflateRaw(first, 6, -15, Z_FINISH);
    const Bytes more = deflateRaw(second, 6, -15, Z_FINISH);
    compressed.insert(compressed.end(), more.begin(), more.end());
    for (std::size_t block : BLOCK_SIZES) {
        SCOPED_TRACE(block);
        expectRecords(decodeInBlocks(compressed, block), records);
    }
}

TEST(ZLibDecoder, EmptyQueueSetsBit4AndKeepsOtherBits) {
    ZLibDecoder decoder;
    unsigned int status = UNKNOWN_ID;
    const DecoderData item = decoder.getNextWithStatus(status);
    EXPECT_EQ(status, UNKNOWN_ID | NOT_ENOUGH_DATA);
    EXPECT_EQ(item.tag, 0u);
    EXPECT_FALSE(item.record);
    decoder.decode(nullptr, 0);
    EXPECT_TRUE(drain(decoder).empty());
    try {
        decoder.decode(nullptr, 1);
        FAIL();
    } catch (const std::invalid_argument& e) {
        EXPECT_TRUE(eodtest::isUsageError(e.what(), "io/zlibdecoder", "data is NULL"));
    }
}

TEST(ZLibDecoder, UnknownIdAndEmptyFrames) {
    const Bytes unknown = {50, 0x00, 0x02, 0xAB, 0xCD};
    const Bytes compressed = deflateRaw(
        {frameOf(1, unknown), frameOf(2, Bytes()), frameOf(3, encode(EngineOutputData()))}, 6, -15,
        Z_FULL_FLUSH);
    ZLibDecoder decoder;
    decoder.decode(compressed.data(), unsigned(compressed.size()));
    unsigned int status = 0;
    DecoderData item = decoder.getNextWithStatus(status);
    EXPECT_EQ(item.tag, 1u);
    EXPECT_FALSE(item.record);
    EXPECT_EQ(status, UNKNOWN_ID);
    status = 0;
    item = decoder.getNextWithStatus(status);
    EXPECT_EQ(item.tag, 2u);
    EXPECT_FALSE(item.record);
    EXPECT_EQ(status, 0u);
    item = decoder.getNextWithStatus(status);
    EXPECT_EQ(item.tag, 3u);
    EXPECT_TRUE(boost::dynamic_pointer_cast<EngineOutputData>(item.record));
    EXPECT_EQ(status, 0u);
}

TEST(ZLibDecoder, UndecodableRecordIsSkippedAndReportedAfterTheRest) {
    const Bytes frame = encode(EngineOutputData());  // 09 00 06, then 6 data bytes
    Bytes cut_short = frame;
    cut_short.pop_back();
    Bytes unread_byte = frame;
    unread_byte[2] = 7;
    unread_byte.push_back(0);
    Bytes trailing_byte = frame;
    trailing_byte.push_back(0);
    const struct {
        Bytes record;
        const char* message;
    } cases[] = {{cut_short, "SerializableFactory::newObject - insufficient data in buffer"},
                 {unread_byte, "SerializableFactory::newObject - could not unSerialize object"},
                 {trailing_byte, "ZLibDecoder::decode() - record does not fill its frame"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const Bytes compressed =
            deflateRaw({frameOf(1, encode(EngineOutputData())), frameOf(2, c.record),
                        frameOf(3, encode(EngineOutputData()))},
                       6, -15, Z_FULL_FLUSH);
        ZLibDecoder decoder;
        try {
            decoder.decode(compressed.data(), unsigned(compressed.size()));
            FAIL();
        } catch (const SerializableError& e) {
            EXPECT_STREQ(e.what(), c.message);
        }
        const std::vector<DecoderData> items = drain(decoder);
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(items[0].tag, 1u);
        EXPECT_EQ(items[1].tag, 3u);
    }
}

TEST(ZLibDecoder, CrcMismatchResetsQuietlyAndKeepsEarlierRecords) {
    const Bytes record = encode(EngineOutputData());
    std::vector<Bytes> frames = {frameOf(1, record), frameOf(2, record, 0xDEADBEEF),
                                 frameOf(3, record)};
    const Bytes compressed = deflateRaw(frames, 6, -15, Z_FULL_FLUSH);
    ZLibDecoder decoder;
    EXPECT_EQ(decoder.numCrcMismatches(), 0u);
    EXPECT_NO_THROW(decoder.decode(compressed.data(), unsigned(compressed.size())));
    EXPECT_EQ(decoder.numCrcMismatches(), 1u);
    std::vector<DecoderData> items = drain(decoder);
    ASSERT_EQ(items.size(), 1u) << "the third record went with the rest of the input";
    EXPECT_EQ(items[0].tag, 1u);
    EXPECT_EQ(decoder.numPendingBytes(), 0u);

    // The reset inflater starts a new stream: an encoder started afresh is read again.
    const std::vector<RecordPtr> records = sampleRecords();
    const Bytes fresh = encodeAll(records, 6, 0);
    decoder.decode(fresh.data(), unsigned(fresh.size()));
    expectRecords(drain(decoder), records);
    EXPECT_EQ(decoder.numCrcMismatches(), 1u);
}

TEST(ZLibDecoder, InflateErrorIsReportedAndTheDecoderRecovers) {
    const Bytes record = encode(EngineOutputData());
    Bytes compressed = deflateRaw({frameOf(1, record)}, 6, -15, Z_FULL_FLUSH);
    compressed.push_back(0x07);  // a final block of the reserved type 3
    ZLibDecoder decoder;
    try {
        decoder.decode(compressed.data(), unsigned(compressed.size()));
        FAIL();
    } catch (const SerializableError& e) {
        EXPECT_STREQ(
            e.what(),
            "ZLibDecoder::decode() - inflate failed with error code -3: invalid block type");
    }
    EXPECT_EQ(drain(decoder).size(), 1u);
    const std::vector<RecordPtr> records = sampleRecords();
    const Bytes fresh = encodeAll(records, 6, 0);
    decoder.decode(fresh.data(), unsigned(fresh.size()));
    expectRecords(drain(decoder), records);
}

TEST(ZLibDecoder, LengthAboveTheChosenLimitIsRejectedAtOnce) {
    const std::uint32_t limit = 1u << 20;
    for (std::uint32_t length : {0xFFFFFFFFu, limit + 1}) {
        SCOPED_TRACE(length);
        Bytes frame;
        detail::appendU32LE(frame, 1);
        detail::appendU32LE(frame, 0);
        detail::appendU32LE(frame, length);
        const Bytes compressed = deflateRaw({frame}, 6, -15, Z_FULL_FLUSH);
        ZLibDecoder decoder;
        EXPECT_EQ(decoder.maxRecordLength(), ZLibDecoder::NO_RECORD_LENGTH_LIMIT);
        decoder.setMaxRecordLength(limit);
        try {
            decoder.decode(compressed.data(), unsigned(compressed.size()));
            FAIL();
        } catch (const SerializableError& e) {
            EXPECT_STREQ(e.what(), "ZLibDecoder::decode() - record length exceeds the maximum");
        }
        EXPECT_EQ(decoder.numPendingBytes(), 0u);
    }
}

TEST(ZLibDecoder, LongestLengthWaitsWithoutReservingMemory) {
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    Bytes frame;
    detail::appendU32LE(frame, 1);
    detail::appendU32LE(frame, 0);
    detail::appendU32LE(frame, 0xFFFFFFFFu);
    frame.insert(frame.end(), 100, 0x09);
    const Bytes compressed = deflateRaw({frame}, 6, -15, Z_FULL_FLUSH);
    ZLibDecoder decoder;
    decoder.decode(compressed.data(), unsigned(compressed.size()));
    EXPECT_TRUE(drain(decoder).empty());
    EXPECT_EQ(decoder.numPendingBytes(), frame.size());
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 32 * 1024) << "peak RSS grew (KiB)";
}

// A few compressed bytes that inflate to millions of empty frames: the queue stays bounded,
// the compressed rest is kept, and draining gets every frame in order, however the caller
// feeds the bytes.
TEST(ZLibDecoder, DecompressionBombIsDecodedInBoundedSteps) {
    const unsigned int frames = 200000;
    Bytes plain;
    for (unsigned int tag = 0; tag < frames; ++tag) {
        detail::appendU32LE(plain, tag);
        detail::appendU32LE(plain, 0);
        detail::appendU32LE(plain, 0);
    }
    const Bytes compressed = deflateRaw({plain}, 9, -15, Z_FULL_FLUSH);
    for (std::size_t block : {compressed.size(), std::size_t(997)}) {
        SCOPED_TRACE(block);
        ZLibDecoder decoder;
        unsigned int next = 0;
        for (std::size_t pos = 0; pos < compressed.size(); pos += block) {
            decoder.decode(compressed.data() + pos,
                           unsigned(std::min(block, compressed.size() - pos)));
            for (;;) {
                unsigned int status = 0;
                const DecoderData item = decoder.getNextWithStatus(status);
                if (status & NOT_ENOUGH_DATA) break;
                ASSERT_EQ(item.tag, next++);
                EXPECT_FALSE(item.record);
            }
            EXPECT_EQ(decoder.numHeldBytes(), 0u) << "draining decoded everything";
        }
        EXPECT_EQ(next, frames);
    }
    // Without draining, decode() keeps the compressed bytes instead of queueing frames.
    ZLibDecoder decoder;
    decoder.decode(compressed.data(), unsigned(compressed.size()));
    EXPECT_GT(decoder.numHeldBytes(), 0u);
    EXPECT_EQ(drain(decoder).size(), frames);
}

// Damaged input must end in an error or in records that are exactly ones that were sent:
// the CRC lets nothing else through.
TEST(ZLibDecoder, FlippedBitsAndGarbageNeverYieldWrongRecords) {
    const std::vector<RecordPtr> records = sampleRecords();
    const std::vector<RecordPtr> some(records.begin(), records.begin() + 21);
    const Bytes compressed = encodeAll(some, 6, 4);
    std::set<Bytes> sent;
    for (const RecordPtr& r : some) sent.insert(encode(*r));
    // The CRC covers the record bytes only, so a damaged tag may get through; a record that
    // was never sent may not.
    auto check = [&](const Bytes& input, std::size_t block) {
        ZLibDecoder decoder;
        for (std::size_t pos = 0; pos < input.size(); pos += block) {
            try {
                decoder.decode(input.data() + pos, unsigned(std::min(block, input.size() - pos)));
            } catch (const SerializableError&) {
            }
        }
        for (const DecoderData& item : drain(decoder)) {
            if (item.record) {
                EXPECT_EQ(sent.count(encode(*item.record)), 1u);
            }
        }
    };
    for (std::size_t byte = 0; byte < compressed.size(); ++byte) {
        for (int bit : {0, 5}) {
            SCOPED_TRACE(testing::Message() << "byte " << byte << " bit " << bit);
            Bytes damaged = compressed;
            damaged[byte] ^= static_cast<unsigned char>(1 << bit);
            check(damaged, byte % 2 ? 7 : 1024);
        }
    }
    for (unsigned seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(seed);
        check(randomBytes(4096, seed), seed % 2 ? 13 : 4096);
    }
}
