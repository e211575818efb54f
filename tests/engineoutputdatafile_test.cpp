#include <eod/eod.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "recordtesting.h"
#include "testfiles.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace tq::eod::io;
namespace fs = std::filesystem;

namespace {

using eodtest::Bytes;
using eodtest::encode;
using eodtest::readFile;
using eodtest::writeFile;
using Timing = eodtest::TestRecord<10>;
using Head = eodtest::TestRecord<11>;
using Eye = eodtest::TestRecord<15>;
using FaceSet = eodtest::TestRecord<94>;
using FramePtr = boost::shared_ptr<EngineOutputData>;

template <class T>
void add(SerializableComposite& parent, unsigned int value) {
    parent.addSubObject(boost::shared_ptr<Serializable>(new T(value)));
}

// Frame i holds Timing unless i % 4 == 3, Head when i is even and Eye when i % 3 == 0, so
// some frames (7, 11, ...) hold nothing.
FramePtr recordedFrame(unsigned int i) {
    FramePtr frame(new EngineOutputData());
    frame->setFrameNum(100 + i);
    if (i % 4 != 3) add<Timing>(*frame, i);
    if (i % 2 == 0) add<Head>(*frame, 1000 + i);
    if (i % 3 == 0) add<Eye>(*frame, 2000 + i);
    return frame;
}

std::vector<Bytes> readAll(EngineOutputDataFileReader& reader) {
    std::vector<Bytes> frames;
    while (FramePtr frame = reader.readData()) frames.push_back(encode(*frame));
    EXPECT_TRUE(reader.endOfData());
    return frames;
}

template <class F>
std::string errorText(F&& f) {
    try {
        f();
    } catch (const EngineOutputDataFileError& e) {
        EXPECT_STREQ(e.className(), "EngineOutputDataFileError");
        return e.what();
    }
    ADD_FAILURE() << "no EngineOutputDataFileError";
    return "";
}

class LogFiles : public ::testing::Test {
  protected:
    // Writes frames 0..n-1 of recordedFrame to Timing, Head and Eye logs in `dir`.
    std::vector<Bytes> record(unsigned int n) {
        EngineOutputDataFileWriter writer;
        writer.newFiles({10, 11, 15}, dir.wstring(), L"", 4096);
        std::vector<Bytes> written;
        for (unsigned int i = 0; i < n; ++i) {
            const FramePtr frame = recordedFrame(i);
            writer.writeData(boost::shared_ptr<const EngineOutputData>(frame));
            if (frame->numSubObjects() > 0) written.push_back(encode(*frame));
        }
        return written;
    }

    eodtest::ScopedObjectType<Timing> timing_type;
    eodtest::ScopedObjectType<Head> head_type;
    eodtest::ScopedObjectType<Eye> eye_type;
    eodtest::ScopedObjectType<FaceSet> face_set_type;
    eodtest::TempDir temp_dir;
    const fs::path dir = temp_dir.path();
};

}  // namespace

TEST_F(LogFiles, RecordingReadsBackFrameForFrame) {
    const std::vector<Bytes> written = record(40);
    EXPECT_TRUE(fs::exists(dir / "Timing.tql"));
    EXPECT_TRUE(fs::exists(dir / "Head.tql"));
    EXPECT_TRUE(fs::exists(dir / "Eye.tql"));
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.wstring());
    EXPECT_TRUE(reader.areFilesOpen());
    EXPECT_EQ(readAll(reader), written);
    EXPECT_FALSE(reader.readData());
    reader.closeFiles();
    EXPECT_FALSE(reader.areFilesOpen());
}

TEST_F(LogFiles, NarrowAndWideNamesMeetTheSameFiles) {
    // Narrow names are UTF-8 and wide ones UTF-32, whatever the locale says.
    const std::string sub = dir.string() + "/aufnahme_\xC3\xBC";
    const std::wstring wide_sub = dir.wstring() + L"/aufnahme_\u00FC";
    fs::create_directory(fs::u8path(sub));
    EngineOutputDataFileWriter writer;
    writer.newFiles({11}, sub, "_\xC3\xA9", 64);
    writer.writeData(*recordedFrame(0));
    writer.closeFiles();
    EXPECT_TRUE(fs::exists(fs::u8path(sub + "/Head_\xC3\xA9.tql")));
    EngineOutputDataFileReader reader;
    reader.openFiles(wide_sub);
    EXPECT_TRUE(reader.readData());
    reader.closeFiles();
    reader.openFile(wide_sub + L"/Head_\u00E9.tql");
    EXPECT_TRUE(reader.readData());
}

TEST_F(LogFiles, FramesWithoutALoggedIdWriteNothingThere) {
    EngineOutputDataFileWriter writer;
    writer.newFiles({10, 11}, dir.string(), "", 4096);
    EngineOutputData frame;
    add<Timing>(frame, 1);
    add<Eye>(frame, 2);
    writer.writeData(frame);
    EngineOutputData off;
    add<Head>(off, 3);
    off.setSerializeEnabled(false);
    writer.writeData(off);
    EngineOutputData head_off;
    boost::shared_ptr<Head> head(new Head(4));
    head->setSerializeEnabled(false);
    head_off.addSubObject(head);
    writer.writeData(head_off);
    writer.closeFiles();
    EXPECT_EQ(fs::file_size(dir / "Head.tql"), 0u);
    EngineOutputData expected;
    add<Timing>(expected, 1);
    EXPECT_EQ(readFile(dir / "Timing.tql"), encode(expected));
}

TEST_F(LogFiles, InterleavedFramesMerge) {
    // File A holds frames 1 and 3, file B frames 2 and 3.
    for (const auto& [name, id, frames] :
         {std::make_tuple("A.tql", char(11), std::vector<unsigned>{1, 3}),
          std::make_tuple("B.tql", char(15), std::vector<unsigned>{2, 3})}) {
        EngineOutputDataFileWriter writer;
        writer.newFile(id, (dir / name).string(), 16);
        for (unsigned int n : frames) {
            EngineOutputData frame;
            frame.setFrameNum(n);
            add<Head>(frame, n);
            add<Eye>(frame, n);
            writer.writeData(frame);
        }
    }
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.string());
    const struct {
        unsigned int frame;
        bool head, eye;
    } expected[] = {{1, true, false}, {2, false, true}, {3, true, true}};
    for (const auto& e : expected) {
        SCOPED_TRACE(e.frame);
        const FramePtr frame = reader.readData();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->frameNum(), e.frame);
        EXPECT_EQ(frame->hasSubObjectID(11), e.head);
        EXPECT_EQ(frame->hasSubObjectID(15), e.eye);
        EXPECT_EQ(frame->numSubObjects(), unsigned(e.head) + unsigned(e.eye));
    }
    EXPECT_FALSE(reader.readData());
}

TEST_F(LogFiles, MergeIdsFilterSubObjectsAndSkipRecords) {
    const std::vector<Bytes> written = record(40);
    EngineOutputDataFileReader reader;
    reader.openFiles({11}, dir.wstring());
    std::vector<Bytes> expected;
    for (unsigned int i = 0; i < 40; i += 2) {
        EngineOutputData frame;
        frame.setFrameNum(100 + i);
        add<Head>(frame, 1000 + i);
        expected.push_back(encode(frame));
    }
    EXPECT_EQ(readAll(reader), expected);

    // Only Eye and Timing records follow the last Head: the replay ends without an empty frame.
    reader.closeFiles();
    reader.openFiles(std::vector<char>{15, 11}, dir.string());
    unsigned int frames = 0;
    while (const FramePtr frame = reader.readData()) {
        EXPECT_FALSE(frame->hasSubObjectID(10));
        EXPECT_GT(frame->numSubObjects(), 0u);
        ++frames;
    }
    EXPECT_EQ(frames, 27u);  // even or divisible by 3, below 40

    reader.closeFiles();
    reader.openFiles(dir.string());
    EXPECT_EQ(readAll(reader), written) << "a plain open merges every id again";
}

TEST_F(LogFiles, FilesAreReadInSortedOrder) {
    // Tokens may have siblings of their id, so their order in a merged frame shows the order
    // in which the files were read. Written in an order that is not sorted.
    for (int stream : {2, 3, 1}) {
        EngineOutputData frame;
        frame.setFrameNum(5);
        frame.addSubObject(
            boost::shared_ptr<Serializable>(new CompressedSerializableToken(stream)));
        FileWriter((dir / (std::string(1, char('a' + stream - 1)) + ".tql")).string()).write(frame);
    }
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.string());
    const FramePtr frame = reader.readData();
    ASSERT_TRUE(frame);
    std::vector<int> order;
    for (const auto& token : frame->subObjects(CompressedSerializableToken::THIS_OBJECT_ID)) {
        order.push_back(
            boost::dynamic_pointer_cast<CompressedSerializableToken>(token)->streamID());
    }
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(LogFiles, FaceSetFallback) {
    EngineOutputDataFileWriter writer;
    writer.newFiles({11, 15}, dir.wstring(), L"", 4096);
    EngineOutputData in_face_set;
    in_face_set.setFrameNum(1);
    boost::shared_ptr<FaceSet> face(new FaceSet(0));
    add<Head>(*face, 42);
    add<Eye>(*face, 43);
    in_face_set.addSubObject(face);
    writer.writeData(in_face_set);
    EngineOutputData both;
    both.setFrameNum(2);
    add<Head>(both, 7);
    boost::shared_ptr<FaceSet> other(new FaceSet(0));
    add<Head>(*other, 8);
    both.addSubObject(other);
    writer.writeData(both);
    writer.closeFiles();

    EngineOutputDataFileReader reader;
    reader.openFiles(dir.wstring());
    FramePtr frame = reader.readData();
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->hasSubObjectID(94));
    EXPECT_EQ(frame->typedSubObject<Head>(11)->value(), 42);
    EXPECT_EQ(frame->typedSubObject<Eye>(15)->value(), 43);
    frame = reader.readData();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->typedSubObject<Head>(11)->value(), 7) << "the frame's own record wins";
}

TEST_F(LogFiles, SingleFileHoldsWholeFrames) {
    const fs::path path = dir / "all.tql";
    EngineOutputDataFileWriter writer;
    writer.newFile(path.wstring(), 4096);
    std::vector<Bytes> written;
    for (unsigned int i = 0; i < 10; ++i) {
        FramePtr frame = recordedFrame(i);
        boost::shared_ptr<FaceSet> face(new FaceSet(i));
        add<Head>(*face, i);
        frame->addSubObject(face);
        writer.writeData(*frame);
        written.push_back(encode(*frame));
    }
    writer.closeFiles();
    EngineOutputDataFileReader reader;
    reader.openFile(path.wstring());
    EXPECT_EQ(readAll(reader), written);
}

TEST_F(LogFiles, UsageErrors) {
    const std::string w = "io/engineoutputdatafilewriter";
    const std::string r = "io/engineoutputdatafilereader";
    EngineOutputDataFileWriter writer;
    EXPECT_USAGE_ERROR(writer.writeData(EngineOutputData()), w, "no files are open");
    EXPECT_USAGE_ERROR(writer.writeData(boost::shared_ptr<const EngineOutputData>()), w,
                       "data is NULL");
    EXPECT_USAGE_ERROR(writer.newFiles({}, dir.wstring(), L"", 16), w,
                       "the list of object IDs to log cannot be empty");
    writer.newFiles({11}, dir.wstring(), L"", 16);
    EXPECT_USAGE_ERROR(writer.newFiles({10}, dir.wstring(), L"", 16), w, "files already open");
    EXPECT_USAGE_ERROR(writer.newFile(10, (dir / "x.tql").wstring(), 16), w, "files already open");
    EXPECT_USAGE_ERROR(writer.newFile((dir / "x.tql").wstring(), 16), w, "files already open");
    writer.closeFiles();

    EngineOutputDataFileReader reader;
    EXPECT_USAGE_ERROR(reader.readData(), r, "files are not open");
    reader.openFiles(dir.wstring());
    EXPECT_USAGE_ERROR(reader.openFiles(dir.wstring()), r, "files already open");
    EXPECT_USAGE_ERROR(reader.openFile((dir / "Head.tql").wstring()), r, "files already open");
}

TEST_F(LogFiles, DuplicateIdFailsAfterOpeningTheFirst) {
    EngineOutputDataFileWriter writer;
    EXPECT_EQ(errorText([&] {
                  writer.newFiles({11, 11}, dir.wstring(), L"", 16);
              }),
              "EngineOutputDataFileWriter::newLogFiles: duplicate object IDs");
    EXPECT_TRUE(writer.areFilesOpen());
    EXPECT_TRUE(fs::exists(dir / "Head.tql"));
    writer.closeFiles();
    EXPECT_FALSE(writer.areFilesOpen());
}

TEST_F(LogFiles, OpenFailures) {
    EngineOutputDataFileWriter writer;
    EXPECT_EQ(errorText([&] {
                  writer.newFiles({10, 50}, dir.wstring(), L"", 16);
              }),
              "EngineOutputDataFileWriter::objectIDToFileName - unknown object ID");
    writer.closeFiles();
    const fs::path missing = dir / "missing";
    EXPECT_EQ(errorText([&] { writer.newFiles({10}, missing.wstring(), L"", 16); }),
              "EngineOutputDataFileWriter::newLogFiles: could not open file.");
    writer.closeFiles();
    EXPECT_EQ(errorText([&] { writer.newFile(10, (missing / "x.tql").wstring(), 16); }),
              "EngineOutputDataFileWriter::newFile: could not open file.");
    writer.closeFiles();
    EXPECT_EQ(errorText([&] { writer.newFile((missing / "x.tql").string(), 16); }),
              "EngineOutputDataFileWriter::newFile: could not open file.");
    writer.closeFiles();

    EngineOutputDataFileReader reader;
    EXPECT_EQ(errorText([&] { reader.openFile((missing / "x.tql").wstring()); }),
              "EngineOutputDataFileReader::openFiles - could not open file " +
                  (missing / "x.tql").string());
}

TEST_F(LogFiles, NameTable) {
    const std::pair<char, std::wstring> rows[] = {
        {10, L"Timing"},   {11, L"Head"},        {16, L"HeadV2"},  {15, L"Eye"},
        {20, L"Features"}, {91, L"Face"},        {93, L"FaceV2"},  {19, L"World"},
        {43, L"WorldV2"},  {40, L"EngineState"}, {32, L"Inertia"}, {36, L"Custom_Events"},
        {34, L"GPS"},      {35, L"GPSV2"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(int(row.first));
        EXPECT_EQ(EngineOutputDataFileWriter::objectIDToFileName(row.first), row.second);
    }
    EngineOutputDataFileWriter::registerObjectIDFileName(11, L"Kopf");
    EXPECT_EQ(EngineOutputDataFileWriter::objectIDToFileName(11), L"Kopf");
    EngineOutputDataFileWriter::registerObjectIDFileName(11, L"Head");
    EngineOutputDataFileWriter::registerObjectIDFileName(96, L"Token");
    EXPECT_EQ(EngineOutputDataFileWriter::objectIDToFileName(96), L"Token");
}

// Entries named like logs that are no regular files are passed over and listed: a FIFO
// would block the opening, a link loop cannot be examined.
TEST_F(LogFiles, OddDirectoryEntriesAreSkippedAndListed) {
    const std::vector<Bytes> written = record(6);
    ASSERT_EQ(::mkfifo((dir / "Fifo.tql").c_str(), 0600), 0);
    fs::create_symlink("Loop.tql", dir / "Loop.tql");
    fs::create_symlink("missing", dir / "Dangling.tql");
    fs::create_directory(dir / "store");
    fs::rename(dir / "Eye.tql", dir / "store" / "Eye.tql");
    fs::create_symlink("store/Eye.tql", dir / "Eye.tql");
    fs::create_directory(dir / "Folder.tql");
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.wstring());
    const std::wstring base = dir.wstring() + L"/";
    EXPECT_EQ(reader.skippedFiles(),
              (std::vector<std::wstring>{base + L"Dangling.tql", base + L"Fifo.tql",
                                         base + L"Folder.tql", base + L"Loop.tql"}));
    EXPECT_EQ(readAll(reader), written) << "a link to a log file is read";
    reader.closeFiles();

    // Named directly, a non-regular file is refused with the reason.
    for (const char* name : {"Fifo.tql", "Folder.tql"}) {
        const std::string path = (dir / name).string();
        EXPECT_EQ(errorText([&] { reader.openFile(path); }),
                  "EngineOutputDataFileReader::openFiles - could not open file " + path +
                      ": not a regular file");
        reader.closeFiles();
    }
}

TEST_F(LogFiles, DirectorySearch) {
    record(4);
    // A trailing separator is kept and another one added, in the paths and in the texts.
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.string() + "/");
    EXPECT_EQ(reader.readData()->frameNum(), 100u);
    reader.closeFiles();

    const fs::path empty = dir / "empty";
    fs::create_directory(empty);
    fs::create_directory(empty / "folder.tql");
    writeFile(empty / "notes.txt", {1});
    writeFile(dir / "plain", {1});
    fs::create_symlink("loop", dir / "loop");
    const std::string prefix = "EngineOutputDataFileReader::logFilesInDir - ";
    const struct {
        std::string directory, message;
    } cases[] = {
        {empty.string() + "/", prefix + "No logfiles found in " + empty.string() + "//"},
        {empty.string(), prefix + "No logfiles found in " + empty.string() + "/"},
        {(dir / "missing").string(), prefix + " FindFirstFile failed with error code 2"},
        {(dir / "plain").string(), prefix + " FindFirstFile failed with error code 20"},
        {(dir / "loop").string(), prefix + "not a valid directory: " + (dir / "loop").string()},
        {std::string(300, 'x'), prefix + "not a valid directory: " + std::string(300, 'x')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.directory);
        EXPECT_EQ(errorText([&] { reader.openFiles(c.directory); }), c.message);
        EXPECT_FALSE(reader.areFilesOpen());
    }
}

TEST_F(LogFiles, GarbageAndForeignRecordsAreCorruptLogs) {
    const fs::path path = dir / "Head.tql";
    const std::string corrupt = "EngineOutputDataFileReader::readData() - corrupt or invalid logfile";
    EngineOutputData frame;
    frame.setFrameNum(9);
    add<Head>(frame, 1);
    Bytes token_then_frame = encode(CompressedSerializableToken(4));
    const Bytes good = encode(frame);
    token_then_frame.insert(token_then_frame.end(), good.begin(), good.end());
    writeFile(path, token_then_frame);

    EngineOutputDataFileReader reader;
    reader.openFile(path.wstring());
    EXPECT_EQ(errorText([&] { reader.readData(); }), corrupt);
    const FramePtr after = reader.readData();
    ASSERT_TRUE(after) << "the foreign record is passed over";
    EXPECT_EQ(encode(*after), good);
    reader.closeFiles();

    std::mt19937 gen(1);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        Bytes garbage(1 + gen() % 64);
        for (unsigned char& b : garbage) b = static_cast<unsigned char>(gen());
        garbage[0] = round % 2 ? 9 : garbage[0];  // half of them claim to be frames
        writeFile(path, garbage);
        reader.openFile(path.string());
        try {
            while (reader.readData()) {
            }
        } catch (const EngineOutputDataFileError& e) {
            EXPECT_EQ(e.what(), corrupt);
            EXPECT_EQ(e.path(), path.string());
        } catch (const SerializableError&) {
            // Two records of one id in a frame: refused by the composite.
        }
        reader.closeFiles();
    }
}

TEST_F(LogFiles, TruncatedRecordingYieldsEveryCompleteFrameThenTheError) {
    EngineOutputDataFileWriter writer;
    writer.newFiles({10, 11}, dir.wstring(), L"", 4096);
    std::vector<Bytes> full;
    std::vector<Bytes> timing_only;
    std::vector<std::uintmax_t> head_ends;
    std::uintmax_t end = 0;
    for (unsigned int i = 0; i < 25; ++i) {
        EngineOutputData frame;
        frame.setFrameNum(i);
        add<Timing>(frame, i);
        EngineOutputData head_record;
        head_record.setFrameNum(i);
        add<Head>(head_record, i);
        timing_only.push_back(encode(frame));
        add<Head>(frame, i);
        full.push_back(encode(frame));
        writer.writeData(frame);
        head_ends.push_back(end += head_record.numTotalBytes());
    }
    writer.closeFiles();
    const fs::path head_path = dir / "Head.tql";
    const Bytes head_file = readFile(head_path);
    ASSERT_EQ(head_file.size(), end);

    for (const bool torn_tails_last : {false, true})
    for (std::size_t cut = 0; cut < head_file.size(); ++cut) {
        SCOPED_TRACE(testing::Message() << "cut " << cut << " last " << torn_tails_last);
        writeFile(head_path, Bytes(head_file.begin(), head_file.begin() + std::ptrdiff_t(cut)));
        std::size_t complete = 0;
        while (complete < head_ends.size() && head_ends[complete] <= cut) ++complete;
        const bool torn = cut != (complete == 0 ? 0 : head_ends[complete - 1]);

        EngineOutputDataFileReader reader;
        reader.openFiles(dir.wstring());
        reader.setTornTailsLast(torn_tails_last);
        std::vector<Bytes> before_error, after_error;
        bool failed = false;
        for (;;) {
            try {
                const FramePtr frame = reader.readData();
                if (!frame) break;
                (failed ? after_error : before_error).push_back(encode(*frame));
            } catch (const EngineOutputDataFileError& e) {
                ASSERT_FALSE(failed);
                EXPECT_EQ(std::string(e.what()),
                          "EngineOutputDataFileReader::readData() - corrupt or invalid logfile");
                EXPECT_EQ(e.path(), head_path.string());
                failed = true;
            }
        }
        EXPECT_EQ(failed, torn);
        // The Head file gives its complete frames; then, by default, its torn tail raises
        // the error at once and the Timing file goes on after it.
        std::vector<Bytes> expected(full.begin(), full.begin() + std::ptrdiff_t(complete));
        const std::vector<Bytes> rest(timing_only.begin() + std::ptrdiff_t(complete),
                                      timing_only.end());
        if (torn_tails_last || !torn) {
            expected.insert(expected.end(), rest.begin(), rest.end());
            EXPECT_TRUE(after_error.empty());
        } else {
            EXPECT_EQ(after_error, rest);
        }
        EXPECT_EQ(before_error, expected);
    }
}

// A recording cut short by a crash: the Head file lags behind (frames 5 to 9 had no head)
// and ends inside the record of frame 10. Frames 5 to 9 are complete in the Timing file and
// must come out before the Head file's torn tail is reported.
TEST_F(LogFiles, TornTailIsReportedAfterTheFramesOfTheOtherFiles) {
    EngineOutputDataFileWriter writer;
    writer.newFiles({10, 11}, dir.wstring(), L"", 4096);
    std::vector<Bytes> written;
    for (unsigned int i = 0; i <= 10; ++i) {
        EngineOutputData frame;
        frame.setFrameNum(i);
        if (i < 10) add<Timing>(frame, i);
        if (i < 5 || i == 10) add<Head>(frame, 1000 + i);
        writer.writeData(frame);
        if (i < 10) written.push_back(encode(frame));
    }
    writer.closeFiles();
    const fs::path head_path = dir / "Head.tql";
    const Bytes head_file = readFile(head_path);
    writeFile(head_path, Bytes(head_file.begin(), head_file.end() - 1));

    const std::string corrupt = "EngineOutputDataFileReader::readData() - corrupt or invalid logfile";
    EngineOutputDataFileReader reader;
    EXPECT_FALSE(reader.tornTailsLast());
    reader.openFiles(dir.wstring());
    reader.setTornTailsLast(true);
    std::vector<Bytes> frames;
    EXPECT_EQ(errorText([&] {
                  while (const FramePtr frame = reader.readData()) {
                      frames.push_back(encode(*frame));
                  }
              }),
              corrupt);
    EXPECT_EQ(frames, written);
    EXPECT_TRUE(reader.endOfData());
    EXPECT_FALSE(reader.readData());
    reader.closeFiles();

    // By default the error comes as soon as the Head file's torn record is read, after its
    // frames 0 to 4; endOfData() reads the files' next records too.
    reader.setTornTailsLast(false);
    reader.openFiles(dir.wstring());
    frames.clear();
    for (int i = 0; i < 5; ++i) frames.push_back(encode(*reader.readData()));
    EXPECT_EQ(frames, std::vector<Bytes>(written.begin(), written.begin() + 5));
    EXPECT_EQ(errorText([&] { reader.endOfData(); }), corrupt);
    EXPECT_FALSE(reader.endOfData());
    frames.clear();
    while (const FramePtr frame = reader.readData()) frames.push_back(encode(*frame));
    EXPECT_EQ(frames, std::vector<Bytes>(written.begin() + 5, written.end()));
    EXPECT_TRUE(reader.endOfData());
}

TEST_F(LogFiles, FlushHandsEveryFrameToTheSystem) {
    EngineOutputDataFileWriter writer;
    EXPECT_USAGE_ERROR(writer.flush(), "io/engineoutputdatafilewriter", "no files are open");
    writer.newFiles({10, 11, 15}, dir.wstring(), L"", 65536);
    std::vector<Bytes> written;
    for (unsigned int i = 0; i < 6; ++i) {
        const FramePtr frame = recordedFrame(i);
        writer.writeData(*frame);
        if (frame->numSubObjects() > 0) written.push_back(encode(*frame));
    }
    EXPECT_EQ(fs::file_size(dir / "Timing.tql"), 0u) << "still in the buffer";
    writer.flush();
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.wstring());
    EXPECT_EQ(readAll(reader), written) << "read while the writer is open";
}

TEST_F(LogFiles, FlushFailureIsReported) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EngineOutputDataFileWriter writer;
    writer.newFile(L"/dev/full", 4096);
    EngineOutputData frame;
    add<Head>(frame, 1);
    writer.writeData(frame);
    EXPECT_EQ(errorText([&] { writer.flush(); }), "Failed to write to stream.");
}

TEST_F(LogFiles, WriteFailureIsReported) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EngineOutputDataFileWriter writer;
    writer.newFile(L"/dev/full", 1);
    EngineOutputData frame;
    add<Head>(frame, 1);
    EXPECT_EQ(errorText([&] { writer.writeData(frame); }), "Failed to write to stream.");
    EXPECT_EQ(errorText([&] { writer.writeData(frame); }), "Failed to write to stream.");
}

TEST_F(LogFiles, ReplayOf100000FramesRunsInFlatMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer keeps freed memory in quarantine";
#endif
    {
        EngineOutputDataFileWriter writer;
        writer.newFiles({10, 11, 15}, dir.wstring(), L"", 65536);
        for (unsigned int i = 0; i < 100000; ++i) {
            EngineOutputData frame;
            frame.setFrameNum(i);
            add<Timing>(frame, i);
            add<Head>(frame, i);
            add<Eye>(frame, i);
            writer.writeData(frame);
        }
    }
    EngineOutputDataFileReader reader;
    reader.openFiles(dir.wstring());
    rusage usage{};
    long warm_peak = 0;
    unsigned int frames = 0;
    while (const FramePtr frame = reader.readData()) {
        ASSERT_EQ(frame->frameNum(), frames);
        ASSERT_EQ(frame->numSubObjects(), 3u);
        if (++frames == 10000) {
            getrusage(RUSAGE_SELF, &usage);
            warm_peak = usage.ru_maxrss;
        }
    }
    EXPECT_EQ(frames, 100000u);
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss - warm_peak, 2048) << "peak RSS grew by this many KiB";
}
