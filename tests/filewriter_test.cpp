#include <gtest/gtest.h>

#include <filesystem>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testfiles.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace tq::eod::io;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

class FileWriterTest : public ::testing::Test {
protected:
    TempDir dir;
};

TEST_F(FileWriterTest, UsageErrors) {
    FileWriter writer;
    EXPECT_FALSE(writer.isOpen());
    EXPECT_TRUE(writer.filePath().empty());
    const EngineOutputData frame;
    EXPECT_USAGE_ERROR(writer.writeNoThrow(frame), "io/filewriter", "files are not open");
    EXPECT_USAGE_ERROR(writer.write(frame), "io/filewriter", "files are not open");
}

TEST_F(FileWriterTest, OpenFailures) {
    const std::string bad = dir.file("no/such/dir.raw");
    EXPECT_EQ(serializableError([&] { FileWriter w(bad); }), "Failed to open file '" + bad + "'.");
    EXPECT_EQ(serializableError([&] { FileWriter w(dir.path().wstring() + L"/n\u00f6/x.raw"); }),
              "Failed to open file '" + dir.file("n\xC3\xB6/x.raw") + "'.");
    FileWriter writer;
    EXPECT_FALSE(writer.open(bad));
    EXPECT_FALSE(writer.isOpen());
}

TEST_F(FileWriterTest, FreeErrorFunctions) {
    EXPECT_EQ(serializableError([] { throwFileOpenError(std::string("a.raw")); }),
              "Failed to open file 'a.raw'.");
    EXPECT_EQ(serializableError([] { throwFileOpenError(std::wstring(L"\u00e9.raw")); }),
              "Failed to open file '\xC3\xA9.raw'.");
    EXPECT_EQ(serializableError([] { throwFileWriteError(std::string("b.raw")); }),
              "Failed to write to file 'b.raw'.");
    EXPECT_EQ(serializableError([] { throwFileWriteError(std::wstring(L"\u4e2d")); }),
              "Failed to write to file '\xE4\xB8\xAD'.");
}

TEST_F(FileWriterTest, FramesSurviveAFileRoundTripByteForByte) {
    ScopedObjectType<TestRecord<51>> r51;
    const std::string path = dir.file("frames.raw");
    Bytes expected;
    {
        FileWriter writer(path);
        EXPECT_EQ(writer.filePath(), dir.path().wstring() + L"/frames.raw");
        for (unsigned int i = 0; i < 20; ++i) {
            EngineOutputData frame;
            frame.setFrameNum(i);
            frame.addSubObject(Ptr(new CompressedSerializableToken(int(i))));
            const boost::shared_ptr<TestRecord<51>> r(new TestRecord<51>(int(i) * 3));
            r->addSubObject(Ptr(new CompressedSerializableToken(-int(i))));
            frame.addSubObject(r);
            writer.write(frame);
            frame.serialize(expected);
            EXPECT_EQ(writer.size(), expected.size());
        }
    }
    EXPECT_EQ(readFile(path), expected);

    FileReader reader(path);
    Bytes again;
    while (!reader.atEnd()) {
        unsigned int status = 0;
        const Ptr p = reader.read(status);
        ASSERT_TRUE(p);
        EXPECT_EQ(status, 0u);
        p->serialize(again);
    }
    EXPECT_EQ(again, expected);
}

TEST_F(FileWriterTest, SwitchedOffRecordIsSkipped) {
    FileWriter writer(dir.file("off.raw"));
    writer.write(EngineOutputData());
    EngineOutputData off;
    off.setSerializeEnabled(false);
    EXPECT_TRUE(writer.writeNoThrow(off));
    writer.write(off);
    EXPECT_EQ(writer.size(), 9u);
}

TEST_F(FileWriterTest, OpenTruncatesAndCloseForgetsThePath) {
    const std::string path = dir.file("t.raw");
    {
        FileWriter writer(path);
        writer.write(CompressedSerializable(Bytes(100)));
    }
    EXPECT_EQ(readFile(path).size(), 107u);
    FileWriter writer;
    EXPECT_TRUE(writer.open(path));
    EXPECT_EQ(writer.size(), 0u);
    EXPECT_EQ(readFile(path).size(), 0u);
    writer.write(EngineOutputData());
    writer.close();
    EXPECT_FALSE(writer.isOpen());
    EXPECT_TRUE(writer.filePath().empty());
    EXPECT_EQ(readFile(path), encode(EngineOutputData()));
}

TEST_F(FileWriterTest, WidePathWithNonAsciiCharacters) {
    const std::wstring wide = dir.path().wstring() + L"/\u00e9t\u00e9-\u4e2d\u6587.raw";
    {
        FileWriter writer(wide);
        EXPECT_EQ(writer.filePath(), wide);
        writer.write(EngineOutputData());
    }
    // The file carries the UTF-8 form of the name.
    EXPECT_EQ(readFile(dir.file("\xC3\xA9t\xC3\xA9-\xE4\xB8\xAD\xE6\x96\x87.raw")),
              encode(EngineOutputData()));
}

TEST_F(FileWriterTest, NarrowPathIsUsedAsItStands) {
    // Not UTF-8, but a valid file name: the writer must create exactly this name.
    const std::string narrow = dir.file("latin1-\xE9.raw");
    {
        FileWriter writer(narrow);
        writer.write(EngineOutputData());
    }
    EXPECT_EQ(readFile(std::filesystem::path(narrow)), encode(EngineOutputData()));
    FileReader reader(narrow);
    unsigned int status = 0;
    EXPECT_TRUE(reader.read(status));
}

TEST_F(FileWriterTest, FullDevice) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    {
        // A record larger than the buffer goes to the device at once.
        FileWriter writer("/dev/full");
        ASSERT_TRUE(writer.isOpen());
        EXPECT_EQ(writer.filePath(), L"/dev/full");
        EXPECT_EQ(serializableError([&] { writer.write(CompressedSerializable(Bytes(70000))); }),
                  "Failed to write to file ''.");
        EXPECT_FALSE(writer.isOpen());
        EXPECT_TRUE(writer.filePath().empty());
    }
    {
        // Small records fail once the 64 KiB buffer has filled.
        FileWriter writer("/dev/full");
        const CompressedSerializable record(Bytes(1000));
        int writes = 0;
        while (writer.writeNoThrow(record) && writes < 1000) ++writes;
        EXPECT_GE(writes, 60);
        EXPECT_LE(writes, 66);
        EXPECT_FALSE(writer.isOpen());
        EXPECT_TRUE(writer.filePath().empty());
        // close() cleared the failure: the writer can be opened again.
        EXPECT_TRUE(writer.open(dir.file("after-full.raw")));
        writer.write(EngineOutputData());
        EXPECT_EQ(writer.size(), 9u);
    }
}

TEST_F(FileWriterTest, BufferedOutputFileStream) {
    const std::string path = dir.file("buffered.raw");
    {
        BufferedOutputFileStream out(path, std::ios_base::binary, 4096);
        EXPECT_EQ(out.bufferSize(), 4096);
        EngineOutputData().writeToBinaryStream(out);
        // Nothing has left the buffer yet.
        EXPECT_EQ(readFile(path).size(), 0u);
        EXPECT_EQ(out.tellp(), 9);
    }
    EXPECT_EQ(readFile(path), encode(EngineOutputData()));
    {
        const int mode = std::ios_base::binary | std::ios_base::app;
        BufferedOutputFileStream out(dir.path().wstring() + L"/\u00e9.raw", mode, 0);
        EngineOutputData().writeToBinaryStream(out);
        EXPECT_EQ(readFile(dir.file("\xC3\xA9.raw")).size(), 9u);
    }
    BufferedOutputFileStream missing(dir.file("no/such/dir.raw"), std::ios_base::binary, 16);
    EXPECT_FALSE(missing.is_open());
    EXPECT_TRUE(missing.fail());
}

// A new size on an open stream hands over what is pending and is used from then on.
TEST_F(FileWriterTest, BufferedOutputFileStreamResizesWhileOpen) {
    const std::string path = dir.file("resized.raw");
    BufferedOutputFileStream out(path, std::ios_base::binary, 4096);
    out.write("abc", 3);
    out.setBufferSize(16);
    EXPECT_EQ(out.bufferSize(), 16);
    EXPECT_EQ(readFile(path).size(), 3u) << "the old buffer was handed over";
    for (int i = 0; i < 40; ++i) out.put('x');
    // 16-byte buffer: 32 of the 40 bytes have gone through, 8 wait.
    EXPECT_EQ(readFile(path).size(), 35u);
    out.setBufferSize(0);
    EXPECT_EQ(readFile(path).size(), 43u);
    out.write("yz", 2);
    EXPECT_EQ(readFile(path).size(), 45u) << "no buffer: straight through";
    out.setBufferSize(64);
    out.write("w", 1);
    out.close();
    EXPECT_FALSE(out.is_open());
    EXPECT_EQ(readFile(path).size(), 46u) << "close() hands over the buffer";
}

// When bytes reach the system: a write that fits the free space waits in the buffer; any
// other write first hands over what is pending, then waits in the emptied buffer when it
// fits or goes through at once.
TEST_F(FileWriterTest, BufferedOutputFileStreamHandsOverWholeWrites) {
    const std::string small(10, 's');
    const std::string fill(54, 'f');
    const std::string large(100, 'l');
    const std::string path = dir.file("whole.raw");
    BufferedOutputFileStream out(path, std::ios_base::binary, 64);
    out.write(small.data(), 10);
    EXPECT_EQ(readFile(path).size(), 0u);
    out.write(fill.data(), 54);  // exactly the free space
    EXPECT_EQ(readFile(path).size(), 0u);
    out.write(small.data(), 10);
    EXPECT_EQ(readFile(path).size(), 64u) << "the full buffer went, the new write waits";
    out.write(large.data(), 100);
    EXPECT_EQ(readFile(path).size(), 174u) << "larger than the buffer: through at once";
    out.flush();
    EXPECT_EQ(readFile(path).size(), 174u);
}

}  // namespace
