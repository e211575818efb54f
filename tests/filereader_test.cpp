#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testfiles.h"

using namespace tq::eod;
using namespace tq::eod::io;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

Bytes frameBytes(unsigned int n) {
    EngineOutputData frame;
    frame.setFrameNum(n);
    frame.addSubObject(Ptr(new CompressedSerializableToken(int(n))));
    return encode(frame);
}

unsigned int frameNum(const Ptr& p) {
    const auto frame = boost::dynamic_pointer_cast<EngineOutputData>(p);
    return frame ? frame->frameNum() : 0xDEADu;
}

class FileReaderTest : public ::testing::Test {
protected:
    TempDir dir;
};

TEST_F(FileReaderTest, UsageErrors) {
    FileReader reader;
    EXPECT_FALSE(reader.isOpen());
    unsigned int status = 0;
    EXPECT_USAGE_ERROR(reader.read(status), "io/filereader", "files are not open");

    const std::string empty = dir.file("empty.raw");
    writeFile(empty, {});
    FileReader at_end(empty);
    EXPECT_TRUE(at_end.isOpen());
    EXPECT_TRUE(at_end.atEnd());
    EXPECT_USAGE_ERROR(at_end.read(status), "io/filereader", "Cannot reading when atEnd().");
}

TEST_F(FileReaderTest, OpenFailures) {
    const std::string missing = dir.file("missing.raw");
    EXPECT_EQ(serializableError([&] { FileReader r(missing); }),
              "Failed to open file '" + missing + "'.");
    EXPECT_EQ(serializableError([&] { FileReader r(dir.path().wstring() + L"/m\u00e9.raw"); }),
              "Failed to open file '" + dir.file("m\xC3\xA9.raw") + "'.");
    FileReader reader;
    EXPECT_FALSE(reader.open(missing));
    EXPECT_FALSE(reader.isOpen());
}

TEST_F(FileReaderTest, ReadsRecordsAndTracksThePosition) {
    const Bytes unknown = {50, 0x00, 0x02, 0xAA, 0xBB};
    const Bytes bytes = concat({frameBytes(1), unknown, frameBytes(2)});
    const std::string path = dir.file("frames.raw");
    writeFile(path, bytes);

    FileReader reader(path);
    EXPECT_EQ(reader.position(), 0u);
    unsigned int status = 99;
    EXPECT_EQ(frameNum(reader.read(status)), 1u);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(reader.position(), frameBytes(1).size());
    EXPECT_FALSE(reader.read(status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
    EXPECT_EQ(frameNum(reader.read(status)), 2u);
    EXPECT_EQ(status, 0u);
    EXPECT_TRUE(reader.atEnd());
    EXPECT_EQ(reader.position(), bytes.size());
    EXPECT_USAGE_ERROR(reader.read(status), "io/filereader", "Cannot reading when atEnd().");
    reader.close();
    EXPECT_FALSE(reader.isOpen());
}

// close() keeps the error flags and open() reports them: a reader that ran into the end of
// a file comes back at its end, one whose read failed there does not open at all, until
// clearState().
TEST_F(FileReaderTest, ReopeningReportsTheStateOfTheEarlierUse) {
    const std::string path = dir.file("frames.raw");
    writeFile(path, frameBytes(1));
    unsigned int status = 0;

    FileReader peeked(path);
    EXPECT_EQ(frameNum(peeked.read(status)), 1u);
    EXPECT_TRUE(peeked.atEnd());
    peeked.close();
    EXPECT_TRUE(peeked.open(path));
    EXPECT_TRUE(peeked.atEnd()) << "the end-of-file flag stayed";
    EXPECT_USAGE_ERROR(peeked.read(status), "io/filereader", "Cannot reading when atEnd().");
    peeked.close();
    peeked.clearState();
    EXPECT_TRUE(peeked.open(path));
    EXPECT_EQ(frameNum(peeked.read(status)), 1u);

    const Bytes whole = frameBytes(2);
    writeFile(path, Bytes(whole.begin(), whole.end() - 1));
    FileReader failed(path);
    EXPECT_FALSE(failed.read(status));
    EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
    failed.close();
    EXPECT_FALSE(failed.open(path)) << "the failed read is still reported";
    failed.clearState();
    EXPECT_TRUE(failed.open(path));
}

TEST_F(FileReaderTest, OnlyRegularFilesAreOpened) {
    const std::string fifo = dir.file("pipe.raw");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string link = dir.file("link.raw");
    writeFile(dir.file("target.raw"), frameBytes(5));
    std::filesystem::create_symlink(dir.file("target.raw"), link);
    for (const std::string& path : {fifo, dir.path().string(), std::string("/dev/zero")}) {
        SCOPED_TRACE(path);
        FileReader reader;
        EXPECT_FALSE(reader.open(path));
        EXPECT_FALSE(reader.isOpen());
        EXPECT_EQ(serializableError([&] { FileReader r(path); }),
                  "Failed to open file '" + path + "': not a regular file.");
    }
    FileReader reader(link);
    unsigned int status = 0;
    EXPECT_EQ(frameNum(reader.read(status)), 5u);
}

// A record larger than the maximum is passed over unread, with an error naming its size and
// offset; unknown records are skipped whatever their size.
TEST_F(FileReaderTest, RecordLargerThanTheMaximumIsRefused) {
    FileReader defaults;
    EXPECT_EQ(defaults.maxRecordSize(), 64u << 20);
    EXPECT_USAGE_ERROR(defaults.setMaxRecordSize(2), "io/filereader",
                       "max_record_size out of range");
    EXPECT_EQ(defaults.maxRecordSize(), 64u << 20);

    const Bytes big = encode(CompressedSerializable(Bytes(100, 1)));
    const Bytes unknown_big = {50, 0xFF, 0xFF, 0x00, 0x01, 0x00, 0x00};  // 65536 data bytes
    Bytes bytes = concat({frameBytes(6), big, unknown_big});
    bytes.resize(bytes.size() + 65536);
    bytes = concat({bytes, frameBytes(8)});
    const std::string path = dir.file("big.raw");
    writeFile(path, bytes);

    FileReader reader(path);
    reader.setMaxRecordSize(static_cast<unsigned int>(big.size() - 1));
    unsigned int status = 0;
    EXPECT_EQ(frameNum(reader.read(status)), 6u);
    EXPECT_EQ(serializableError([&] { reader.read(status); }),
              "FileReader::read() - record of " + std::to_string(big.size()) + " bytes at offset " +
                  std::to_string(frameBytes(6).size()) +
                  " exceeds the maximum record size of " + std::to_string(big.size() - 1) +
                  " bytes");
    EXPECT_FALSE(reader.read(status));
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
    EXPECT_EQ(frameNum(reader.read(status)), 8u);
    EXPECT_TRUE(reader.atEnd());
    reader.close();
    reader.clearState();
    reader.open(path);
    reader.setMaxRecordSize(static_cast<unsigned int>(big.size()));
    reader.read(status);
    EXPECT_TRUE(boost::dynamic_pointer_cast<CompressedSerializable>(reader.read(status)));

    // A forged 4 GiB size costs nothing: refused from its header.
    writeFile(path, {EngineOutputData::THIS_OBJECT_ID, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xF0, 1});
    FileReader forged(path);
    EXPECT_EQ(serializableError([&] { forged.read(status); }),
              "FileReader::read() - record of 4294967287 bytes at offset 0 exceeds the maximum "
              "record size of 67108864 bytes");
    EXPECT_TRUE(forged.atEnd());
}

TEST_F(FileReaderTest, TruncatedTail) {
    const Bytes whole = frameBytes(3);
    const std::string path = dir.file("cut.raw");
    for (std::size_t n = 1; n < whole.size(); ++n) {
        SCOPED_TRACE(n);
        writeFile(path, concat({frameBytes(1), Bytes(whole.begin(), whole.begin() + long(n))}));
        FileReader reader(path);
        unsigned int status = 0;
        EXPECT_EQ(frameNum(reader.read(status)), 1u);
        EXPECT_FALSE(reader.read(status));
        EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
    }
}

TEST_F(FileReaderTest, WidePathWithNonAsciiCharacters) {
    const std::wstring wide = dir.path().wstring() + L"/fr\u00e9quence-\u4e2d.raw";
    writeFile(dir.file("fr\xC3\xA9quence-\xE4\xB8\xAD.raw"), frameBytes(4));
    FileReader reader(wide);
    unsigned int status = 0;
    EXPECT_EQ(frameNum(reader.read(status)), 4u);
    FileReader again;
    EXPECT_TRUE(again.open(wide));
}

}  // namespace
