// Index files: written beside the logs, believed only as far as they check out, searched to
// read a frame range that equals the full merge's frames, and rebuilt by a scan; recovery of
// damaged logs.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <eod/facesetoutputdata.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logindex.h>
#include <eod/io/index/logindexwriter.h>
#include <eod/io/index/logrecovery.h>
#include <eod/io/index/recordingindexwriter.h>
#include <eod/timingoutputdata.h>

#include "eod/io/index/detail/indexformat.h"
#include "testfiles.h"
#include "testing/syntheticframe.h"

namespace fs = std::filesystem;
using namespace tq::eod;
using namespace tq::eod::io;

namespace {

const unsigned int kMax = std::numeric_limits<unsigned int>::max();
const std::vector<char> kIds = {10, 32, FaceSetOutputData::THIS_OBJECT_ID};

class LogIndexTest : public ::testing::Test {
  protected:
    void SetUp() override {
        EngineOutputDataFileWriter::registerObjectIDFileName(FaceSetOutputData::THIS_OBJECT_ID,
                                                             L"FaceSet");
        _dir = fs::temp_directory_path() /
               ("logindex_test_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(_dir);
        fs::create_directories(_dir / "rec");
    }
    void TearDown() override { fs::remove_all(_dir); }

  public:
    std::string rec() const { return (_dir / "rec").string(); }
    std::string log(const std::string& name) const { return (_dir / "rec" / name).string(); }

    // Frames in the given order through the log writer and the index writer side by side;
    // every fifth frame lacks its face set, so the logs hold different frame numbers.
    void record(const std::vector<unsigned int>& numbers, const std::string& dir) {
        EngineOutputDataFileWriter logs;
        RecordingIndexWriter indexes;
        logs.newFiles(kIds, dir, "", 4096);
        indexes.newFiles(kIds, dir, "");
        for (unsigned int n : numbers) {
            boost::shared_ptr<EngineOutputData> frame = eodtesting::syntheticFrame(n);
            if (n % 5 == 3) frame->removeSubObject(FaceSetOutputData::THIS_OBJECT_ID);
            logs.writeData(*frame);
            indexes.writeData(*frame);
        }
        logs.closeFiles();
        indexes.closeFiles();
    }
    void record(unsigned int count) {
        std::vector<unsigned int> numbers;
        for (unsigned int n = 0; n < count; ++n) numbers.push_back(100 + n);
        record(numbers, rec());
    }

    fs::path _dir;
};

using Frames = std::vector<std::vector<unsigned char>>;

std::vector<unsigned char> bytesOf(const EngineOutputData& frame) {
    std::vector<unsigned char> bytes;
    frame.serialize(bytes);
    return bytes;
}

// What the full merge returns within [first, last].
Frames fullMerge(const std::string& dir, unsigned int first, unsigned int last) {
    EngineOutputDataFileReader reader;
    reader.openFiles(dir);
    Frames frames;
    while (boost::shared_ptr<EngineOutputData> frame = reader.readData()) {
        if (frame->frameNum() >= first && frame->frameNum() <= last) frames.push_back(bytesOf(*frame));
    }
    return frames;
}

Frames rangeRead(const std::string& path, unsigned int first, unsigned int last,
                 bool* searched = nullptr) {
    FrameRangeReader reader;
    reader.open(path);
    reader.setRange(first, last);
    Frames frames;
    while (boost::shared_ptr<EngineOutputData> frame = reader.readData()) frames.push_back(bytesOf(*frame));
    if (searched) *searched = reader.searched();
    return frames;
}

void expectRangesMatch(const std::string& dir, bool expect_search) {
    const std::pair<unsigned int, unsigned int> ranges[] = {
        {0, kMax}, {0, 99}, {100, 100}, {150, 160}, {153, 153}, {248, 260}, {299, 299}, {300, kMax}};
    for (const auto& r : ranges) {
        bool searched = false;
        const Frames got = rangeRead(dir, r.first, r.second, &searched);
        EXPECT_EQ(got, fullMerge(dir, r.first, r.second)) << r.first << ":" << r.second;
        EXPECT_EQ(searched, expect_search) << r.first << ":" << r.second;
    }
}

void flipByte(const std::string& path, std::uint64_t offset) {
    std::vector<unsigned char> bytes = eodtest::readFile(path);
    bytes.at(offset) ^= 0x5A;
    eodtest::writeFile(path, bytes);
}

}  // namespace

TEST_F(LogIndexTest, WrittenIndexMatchesAScanAndIsBelievedWhole) {
    record(200);
    for (const char* name : {"Timing.tql", "Inertia.tql", "FaceSet.tql"}) {
        const LogIndex index = LogIndex::openVerified(log(name));
        EXPECT_EQ(index.origin(), LogIndex::Origin::INDEX_FILE) << name;
        EXPECT_TRUE(index.monotonic());
        const LogIndex scanned = LogIndex::scan(log(name));
        ASSERT_EQ(index.size(), scanned.size()) << name;
        for (std::size_t i = 0; i < index.size(); ++i) {
            EXPECT_EQ(index.entry(i).frame_num, scanned.entry(i).frame_num);
            EXPECT_EQ(index.entry(i).offset, scanned.entry(i).offset);
        }
        EXPECT_EQ(index.recordsEnd(), fs::file_size(log(name)));
    }
    EXPECT_EQ(LogIndex::open(log("FaceSet.tql")).size(), 160u);
    expectRangesMatch(rec(), true);
}

TEST_F(LogIndexTest, HeaderBytesAreAsDocumented) {
    record(3);
    const std::vector<unsigned char> bytes = eodtest::readFile(log("Timing.itql"));
    ASSERT_EQ(bytes.size(), 36u + 3 * 12);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "TQIX");
    EXPECT_EQ(bytes[5], 1);     // version
    EXPECT_EQ(bytes[7], 1);     // monotonic
    EXPECT_EQ(bytes[27], 3);    // entry count
    EXPECT_EQ(bytes[39], 100);  // first frame number
    EXPECT_EQ(bytes[47], 0);    // at byte 0
    const std::uint64_t size = fs::file_size(log("Timing.tql"));
    EXPECT_EQ(io::detail::loadU64(bytes.data() + 8), size);
    EXPECT_EQ(io::detail::loadU64(bytes.data() + 40 + 12 * 2), size / 3 * 2);
}

// Every way an index can be wrong costs a scan (all or part), never a frame.
TEST_F(LogIndexTest, StaleTruncatedOrLyingIndexFallsBackToTheLog) {
    struct Case {
        const char* what;
        std::function<void(LogIndexTest&)> spoil;
        LogIndex::Origin origin;
    };
    const std::vector<Case> cases = {
        {"no index", [](LogIndexTest& t) { fs::remove(t.log("FaceSet.itql")); },
         LogIndex::Origin::SCAN},
        {"index cut in its header",
         [](LogIndexTest& t) { fs::resize_file(t.log("FaceSet.itql"), 20); }, LogIndex::Origin::SCAN},
        {"index cut in its entries",
         [](LogIndexTest& t) { fs::resize_file(t.log("FaceSet.itql"), 36 + 12 * 50); },
         LogIndex::Origin::SCAN},
        {"header byte flipped", [](LogIndexTest& t) { flipByte(t.log("FaceSet.itql"), 9); },
         LogIndex::Origin::SCAN},
        {"log rewritten, same size", [](LogIndexTest& t) { flipByte(t.log("FaceSet.tql"), 3); },
         LogIndex::Origin::SCAN},
        {"log cut short", [](LogIndexTest& t) { fs::resize_file(t.log("FaceSet.tql"), 5000); },
         LogIndex::Origin::SCAN},
        {"log grew after the index",
         [](LogIndexTest& t) {
             std::vector<unsigned char> more;
             EngineOutputData frame;
             frame.setFrameNum(400);
             frame.addSubObject(eodtesting::syntheticFrame(400)->subObject(FaceSetOutputData::THIS_OBJECT_ID));
             frame.serialize(more);
             std::ofstream(t.log("FaceSet.tql"), std::ios_base::app | std::ios_base::binary)
                 .write(reinterpret_cast<const char*>(more.data()), static_cast<std::streamsize>(more.size()));
         },
         LogIndex::Origin::INDEX_FILE_AND_SCAN},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove_all(rec());
        fs::create_directories(rec());
        record(200);
        c.spoil(*this);
        EXPECT_EQ(LogIndex::open(log("FaceSet.tql")).origin(), c.origin);
        EXPECT_EQ(LogIndex::openVerified(log("FaceSet.tql")).origin(), c.origin);
        // Read on past every error, as a caller that wants every good frame does.
        for (const auto& r : std::vector<std::pair<unsigned, unsigned>>{{150, 160}, {0, kMax}}) {
            FrameRangeReader reader;
            reader.open(rec());
            reader.setRange(r.first, r.second);
            EngineOutputDataFileReader all;
            all.openFiles(rec());
            Frames got, expected;
            for (int calls = 0; calls < 1000; ++calls) {
                try {
                    const auto frame = reader.readData();
                    if (!frame) break;
                    got.push_back(bytesOf(*frame));
                } catch (const EngineOutputDataFileError&) {
                }
            }
            for (int calls = 0; calls < 1000; ++calls) {
                try {
                    const auto frame = all.readData();
                    if (!frame) break;
                    if (frame->frameNum() >= r.first && frame->frameNum() <= r.second) {
                        expected.push_back(bytesOf(*frame));
                    }
                } catch (const EngineOutputDataFileError&) {
                }
            }
            EXPECT_EQ(got, expected) << r.first << ":" << r.second;
        }
    }
}

// An index with sound checksums that names the wrong frames (here: written from frame
// numbers the log does not hold) is caught where the search lands and replaced by a scan.
TEST_F(LogIndexTest, IndexNamingWrongFramesIsReplacedByAScan) {
    record(200);
    const LogIndex truth = LogIndex::scan(log("Timing.tql"));
    LogIndexWriter liar;
    liar.open(log("Timing.tql"));
    const std::uint64_t record_size = truth.entry(1).offset;
    for (std::size_t i = 0; i < truth.size(); ++i) liar.add(truth.entry(i).frame_num + 7, record_size);
    liar.close();
    EXPECT_EQ(LogIndex::open(log("Timing.tql")).origin(), LogIndex::Origin::INDEX_FILE);
    expectRangesMatch(rec(), true);
}

TEST_F(LogIndexTest, FramesOutOfOrderAreReadByMergingEverything) {
    std::vector<unsigned int> numbers;
    for (unsigned int n = 100; n < 300; ++n) numbers.push_back(n);
    std::swap(numbers[60], numbers[61]);
    record(numbers, rec());
    EXPECT_FALSE(LogIndex::openVerified(log("Timing.tql")).monotonic());
    expectRangesMatch(rec(), false);
}

TEST_F(LogIndexTest, IndexFlushedBeforeItsLogCoversWhatIsOnDisk) {
    EngineOutputDataFileWriter logs;
    RecordingIndexWriter indexes;
    logs.newFiles({10}, rec(), "", 1 << 16);
    indexes.newFiles({10}, rec(), "");
    for (unsigned int n = 0; n < 20; ++n) {
        logs.writeData(*eodtesting::syntheticFrame(n));
        indexes.writeData(*eodtesting::syntheticFrame(n));
    }
    indexes.flush();  // nothing of the log on disk yet
    EXPECT_EQ(LogIndex::open(log("Timing.tql")).size(), 0u);
    logs.flush();
    EXPECT_EQ(LogIndex::open(log("Timing.tql")).origin(), LogIndex::Origin::INDEX_FILE_AND_SCAN);
    indexes.flush();
    const LogIndex index = LogIndex::openVerified(log("Timing.tql"));
    EXPECT_EQ(index.origin(), LogIndex::Origin::INDEX_FILE);
    EXPECT_EQ(index.size(), 20u);
    logs.closeFiles();
    indexes.closeFiles();
}

TEST_F(LogIndexTest, RecoveryKeepsGoodRecordsAndNamesTheDamage) {
    record(10);
    std::vector<unsigned char> bytes = eodtest::readFile(log("Timing.tql"));
    const LogIndex index = LogIndex::scan(log("Timing.tql"));
    // Record 3 undecodable (its sub-record claims more bytes than the frame holds), the tail cut.
    const std::uint64_t third = index.entry(3).offset, fourth = index.entry(4).offset;
    bytes[third + 10] = 0x7F;
    bytes.resize(bytes.size() - 10);
    eodtest::writeFile(log("Timing.tql"), bytes);
    const LogRecovery r = recoverLog(log("Timing.tql"), (_dir / "Timing.tql").string());
    EXPECT_EQ(r.records_kept, 8u);
    ASSERT_EQ(r.dropped.size(), 2u);
    EXPECT_EQ(r.dropped[0].kind, LogDamage::CORRUPT_RECORD);
    EXPECT_EQ(r.dropped[0].offset, third);
    EXPECT_EQ(r.dropped[0].bytes, fourth - third);
    EXPECT_TRUE(r.dropped[0].frame_known);
    EXPECT_EQ(r.dropped[0].frame_num, 103u);
    EXPECT_EQ(r.dropped[1].kind, LogDamage::TORN_TAIL);
    EXPECT_EQ(r.dropped[1].offset, index.entry(9).offset);
    EXPECT_EQ(r.dropped[1].frame_num, 109u);
    const LogIndex recovered = LogIndex::openVerified((_dir / "Timing.tql").string());
    EXPECT_EQ(recovered.origin(), LogIndex::Origin::INDEX_FILE);
    EXPECT_EQ(recovered.size(), 8u);
}

// A log cut at any byte, as a killed writer leaves it, recovers to exactly the records that
// were whole before the cut, with an index that is believed.
TEST_F(LogIndexTest, LogCutAnywhereRecoversToEveryCompleteRecord) {
    record(6);  // five face sets of about 1.2 KB: small, so that 2,250 recoveries stay quick
    const std::vector<unsigned char> original = eodtest::readFile(log("FaceSet.tql"));
    const LogIndex index = LogIndex::scan(log("FaceSet.tql"));
    std::vector<std::uint64_t> cuts;
    for (std::uint64_t k = original.size() - std::min<std::uint64_t>(2048, original.size());
         k <= original.size(); ++k) {
        cuts.push_back(k);
    }
    std::srand(14);
    for (int i = 0; i < 200; ++i) cuts.push_back(static_cast<std::uint64_t>(std::rand()) % original.size());
    const std::string cut = (_dir / "cut.tql").string(), out = (_dir / "out.tql").string();
    for (std::uint64_t k : cuts) {
        SCOPED_TRACE(k);
        // Fresh files rather than truncated ones, which ext4 writes back to the disk on close.
        for (const std::string& f : {cut, out, logIndexPath(out)}) fs::remove(f);
        eodtest::writeFile(cut, std::vector<unsigned char>(original.begin(), original.begin() + k));
        const LogRecovery r = recoverLog(cut, out);
        // The records that end at or before the cut.
        std::size_t whole = 0;
        while (whole < index.size() &&
               (whole + 1 < index.size() ? index.entry(whole + 1).offset : original.size()) <= k) {
            ++whole;
        }
        const std::uint64_t good_end = whole < index.size() ? index.entry(whole).offset : original.size();
        ASSERT_EQ(r.records_kept, whole);
        ASSERT_EQ(eodtest::readFile(out),
                  std::vector<unsigned char>(original.begin(), original.begin() + good_end));
        if (good_end == k) {
            ASSERT_TRUE(r.dropped.empty());
        } else {
            ASSERT_EQ(r.dropped.size(), 1u);
            EXPECT_EQ(r.dropped[0].kind, LogDamage::TORN_TAIL);
            EXPECT_EQ(r.dropped[0].offset, good_end);
            EXPECT_EQ(r.dropped[0].bytes, k - good_end);
        }
        const LogIndex recovered = LogIndex::openVerified(out);
        ASSERT_EQ(recovered.origin(), LogIndex::Origin::INDEX_FILE);
        ASSERT_EQ(recovered.size(), whole);
    }
}
