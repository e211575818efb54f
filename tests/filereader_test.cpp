#include <gtest/gtest.h>

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
