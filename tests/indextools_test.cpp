// End to end: the commands that build new recordings from old ones (recover, filter, merge),
// run on the built `eod` as a user would, with damaged input.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/index/logindex.h>

#include "eodtoolrun.h"

namespace fs = std::filesystem;
using eodtest::EodTool;
using eodtest::Result;
using namespace tq::eod;

namespace {

std::vector<unsigned int> frameNumbers(const std::string& path) {
    io::EngineOutputDataFileReader reader;
    if (fs::is_directory(path)) {
        reader.openFiles(path);
    } else {
        reader.openFile(path);
    }
    std::vector<unsigned int> numbers;
    while (auto frame = reader.readData()) numbers.push_back(frame->frameNum());
    return numbers;
}

std::vector<unsigned int> range(unsigned int first, unsigned int last) {
    std::vector<unsigned int> numbers;
    for (unsigned int n = first; n <= last; ++n) numbers.push_back(n);
    return numbers;
}

void expectIndexed(const std::string& dir) {
    for (const auto& entry : fs::directory_iterator(dir)) {
        if (entry.path().extension() != ".tql") continue;
        EXPECT_EQ(io::LogIndex::openVerified(entry.path().string()).origin(),
                  io::LogIndex::Origin::INDEX_FILE)
            << entry.path();
    }
}

}  // namespace

class IndexTools : public EodTool {
  protected:
    // A 40-frame demo recording (frames 0..39) in "rec".
    void SetUp() override {
        EodTool::SetUp();
        ASSERT_EQ(run("demo --frames 40 --out " + path("rec")).status, 0);
    }
};

TEST_F(IndexTools, RecoverDropsTornTailAndCorruptRecordAndNamesThem) {
    // Timing records are 36 bytes: record 5 gets a sub-record size past its end, the face
    // set log loses the last 100 bytes.
    std::vector<unsigned char> timing = eodtest::readFile(path("rec/Timing.tql"));
    timing.at(36 * 5 + 10) = 0x7F;
    eodtest::writeFile(path("rec/Timing.tql"), timing);
    fs::resize_file(path("rec/FaceSet.tql"), fs::file_size(path("rec/FaceSet.tql")) - 100);
    const std::vector<unsigned char> before = eodtest::readFile(path("rec/FaceSet.tql"));

    const Result r = run("recover " + path("rec") + " " + path("fixed"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("Timing.tql: corrupt record at byte 180 (36 bytes, frame 5): dropped"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("FaceSet.tql: truncated: the file ends inside a record at byte "),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("frame 39): dropped"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("2 dropped"), std::string::npos) << r.out;
    EXPECT_EQ(eodtest::readFile(path("rec/FaceSet.tql")), before);  // IN only read
    EXPECT_EQ(frameNumbers(path("fixed")), range(0, 39));
    EXPECT_EQ(frameNumbers(path("fixed/Timing.tql")).size(), 39u);
    expectIndexed(path("fixed"));
    // The repaired copy has nothing left to drop.
    const Result again = run("recover " + path("fixed") + " " + path("again"));
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.out.find(" 0 dropped"), std::string::npos) << again.out;
}

TEST_F(IndexTools, RecoverOfOneLogFileWritesTheFileAndItsIndex) {
    fs::resize_file(path("rec/Timing.tql"), 36 * 10 + 9);
    const Result r = run("recover " + path("rec/Timing.tql") + " " + path("t.tql"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("at byte 360 (9 bytes, frame 10)"), std::string::npos) << r.out;
    EXPECT_EQ(fs::file_size(path("t.tql")), 360u);
    EXPECT_TRUE(fs::exists(path("t.itql")));
}

TEST_F(IndexTools, RecoverRefusesWhatWouldOverwriteOrMisplaceData) {
    struct Case {
        std::string args;
        int status;
        std::string message;
    };
    fs::create_directory(path("taken"));
    const std::vector<Case> cases = {
        {"recover", 2, "IN is required"},
        {"recover " + path("rec"), 2, "OUT is required"},
        {"recover " + path("missing") + " " + path("out"), 1, "no such file or directory"},
        {"recover " + path("rec") + " " + path("taken"), 1, "already exists"},
        {"recover " + path("rec") + " " + path("rec"), 1, "already exists"},
        {"recover " + path("rec") + " " + path("rec/inner"), 1, "inside the input"},
        {"recover " + path("rec") + " " + path("nodir/out"), 1, "no such directory"},
    };
    for (const Case& c : cases) {
        const Result r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args << "\n" << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << "\n" << r.err;
    }
    EXPECT_TRUE(fs::is_empty(path("taken")));
    EXPECT_FALSE(fs::exists(path("rec/inner")));
    // No temporary names left anywhere.
    for (const auto& entry : fs::directory_iterator(_dir)) {
        EXPECT_EQ(entry.path().filename().string().find("partial"), std::string::npos);
    }
}

TEST_F(IndexTools, FilterKeepsTheChosenFramesWithAnIndex) {
    struct Case {
        std::string options;
        std::vector<unsigned int> frames;
    };
    const std::vector<Case> cases = {
        {"--frames 10:19", range(10, 19)},
        {"--frames 10:19 --every 3", {10, 13, 16, 19}},
        {"--frames 35:", range(35, 39)},
        {"--time 0.1:0.2", range(6, 12)},  // 60 frames a second from frame 0
        {"--frames 50:60", {}},
    };
    int n = 0;
    for (const Case& c : cases) {
        const std::string out = path("f" + std::to_string(n++));
        const Result r = run("filter " + path("rec") + " " + out + " " + c.options);
        ASSERT_EQ(r.status, 0) << c.options << "\n" << r.err;
        EXPECT_EQ(frameNumbers(out), c.frames) << c.options;
        expectIndexed(out);
    }
    const Result ids = run("filter " + path("rec") + " " + path("ids") + " --ids 10 --frames 0:4");
    ASSERT_EQ(ids.status, 0) << ids.err;
    EXPECT_TRUE(fs::exists(path("ids/Timing.tql")));
    EXPECT_FALSE(fs::exists(path("ids/FaceSet.tql")));
    // Records are copied as they stand.
    const std::vector<unsigned char> timing = eodtest::readFile(path("rec/Timing.tql"));
    EXPECT_EQ(eodtest::readFile(path("ids/Timing.tql")),
              std::vector<unsigned char>(timing.begin(), timing.begin() + 5 * 36));
}

TEST_F(IndexTools, FilterRefusesBadOptionsAndDamagedInput) {
    struct Case {
        std::string args;
        int status;
        std::string message;
    };
    fs::resize_file(path("rec/Timing.tql"), 36 * 30 + 5);
    const std::vector<Case> cases = {
        {"--frames 9:3", 2, "--frames"},
        {"--frames -1:3", 2, "--frames"},
        {"--frames 1.5:3", 2, "--frames"},
        {"--time a:b", 2, "--time"},
        {"--every 0", 2, "--every"},
        {"", 1, "Timing.tql: truncated: the file ends inside a record at byte 1080; repair it with eod recover"},
    };
    for (const Case& c : cases) {
        const Result r = run("filter " + path("rec") + " " + path("out") + " " + c.args);
        EXPECT_EQ(r.status, c.status) << c.args << "\n" << r.err;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << "\n" << r.err;
        EXPECT_FALSE(fs::exists(path("out")));
    }
    // Repaired first, the same recording filters.
    ASSERT_EQ(run("recover " + path("rec") + " " + path("fixed")).status, 0);
    const Result r = run("filter " + path("fixed") + " " + path("out") + " --frames 28:31");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(frameNumbers(path("out")), range(28, 31));
}

TEST_F(IndexTools, MergeJoinsRecordingsAndNeverResolvesAConflictSilently) {
    ASSERT_EQ(run("filter " + path("rec") + " " + path("a") + " --frames 0:19").status, 0);
    ASSERT_EQ(run("filter " + path("rec") + " " + path("b") + " --frames 10:39").status, 0);
    const Result joined = run("merge " + path("a") + " " + path("b") + " " + path("ab"));
    ASSERT_EQ(joined.status, 0) << joined.err;
    EXPECT_EQ(frameNumbers(path("ab")), range(0, 39));
    for (const char* log : {"Timing.tql", "FaceSet.tql", "WorldV2.tql"}) {
        EXPECT_EQ(eodtest::readFile(path("ab/") + log), eodtest::readFile(path("rec/") + log)) << log;
    }
    expectIndexed(path("ab"));

    // b's timing record of frame 12 differs from a's.
    std::vector<unsigned char> timing = eodtest::readFile(path("b/Timing.tql"));
    timing.at(36 * 2 + 20) ^= 1;
    eodtest::writeFile(path("b/Timing.tql"), timing);
    fs::remove(path("b/Timing.itql"));
    const Result refused = run("merge " + path("a") + " " + path("b") + " " + path("c"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("conflict: Timing.tql frame 12: " + path("a") + " and " + path("b") + " differ"),
              std::string::npos)
        << refused.err;
    EXPECT_NE(refused.err.find("--prefer"), std::string::npos);
    EXPECT_FALSE(fs::exists(path("c")));
    for (const char* prefer : {"first", "last"}) {
        const std::string out = path(std::string("c-") + prefer);
        const Result r = run("merge " + path("a") + " " + path("b") + " " + out + " --prefer " + prefer);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_NE(r.err.find("conflict: Timing.tql frame 12"), std::string::npos) << r.err;
        EXPECT_NE(r.out.find("1 conflicts resolved by --prefer " + std::string(prefer)), std::string::npos);
        const std::vector<unsigned char> merged = eodtest::readFile(out + "/Timing.tql");
        const std::vector<unsigned char> wanted =
            std::string(prefer) == "first" ? eodtest::readFile(path("a/Timing.tql"))
                                           : std::vector<unsigned char>(timing.begin() + 72, timing.begin() + 108);
        const std::size_t at = std::string(prefer) == "first" ? 36 * 12 : 0;
        EXPECT_TRUE(std::equal(wanted.begin() + at, wanted.begin() + at + 36, merged.begin() + 36 * 12)) << prefer;
    }

    const struct {
        std::string args;
        int status;
    } bad[] = {{"merge " + path("a") + " " + path("x"), 2},
               {"merge " + path("a") + " " + path("b") + " " + path("x") + " --prefer second", 2},
               {"merge " + path("a") + " " + path("rec/Timing.tql") + " " + path("x"), 1},
               {"merge " + path("a") + " " + path("b") + " " + path("a"), 1}};
    for (const auto& c : bad) EXPECT_EQ(run(c.args).status, c.status) << c.args;
}

TEST_F(IndexTools, RecordWritesAnIndexBesideEveryLog) {
    const std::string port = serveSynthetic("--frames 90 --rate 2000");
    ASSERT_FALSE(port.empty());
    const Result recorded = run("record --connect 127.0.0.1:" + port + " --out " +
                                path("live") + " --frames 90 --idle 10");
    ASSERT_EQ(recorded.status, 0) << recorded.err;
    expectIndexed(path("live"));
    EXPECT_EQ(io::LogIndex::open(path("live/Timing.tql")).size(), 90u);
}

TEST_F(IndexTools, InfoAnswersFromTheIndexAndScansWhatItCannotVouchFor) {
    // A copy with gaps, so the summary has something to say: frames 0..39 without 10..14.
    ASSERT_EQ(run("filter " + path("rec") + " " + path("a") + " --frames 0:9").status, 0);
    ASSERT_EQ(run("filter " + path("rec") + " " + path("b") + " --frames 15:39").status, 0);
    ASSERT_EQ(run("merge " + path("a") + " " + path("b") + " " + path("gappy")).status, 0);
    expectIndexed(path("gappy"));
    const Result indexed = run("info " + path("gappy"));
    const Result scanned = run("info --scan " + path("gappy"));
    ASSERT_EQ(indexed.status, 0) << indexed.err;
    ASSERT_EQ(scanned.status, 0) << scanned.err;
    EXPECT_NE(indexed.out.find("frames from the index file"), std::string::npos) << indexed.out;
    EXPECT_EQ(scanned.out.find("frames from the index file"), std::string::npos) << scanned.out;
    // The summary and the merged ledger are the same either way.
    const auto head = [](const std::string& out) { return out.substr(0, out.find("\n\n")); };
    EXPECT_EQ(head(indexed.out), head(scanned.out));
    EXPECT_NE(indexed.out.find("frames: 35, frame numbers 0..39"), std::string::npos) << indexed.out;
    EXPECT_NE(indexed.out.find("merged gaps: 5 missing frame numbers: 10-14"), std::string::npos)
        << indexed.out;
    EXPECT_NE(indexed.out.find("mean frame rate"), std::string::npos) << indexed.out;

    // Bytes the index does not cover are read: the torn tail is reported as a scan finds it.
    std::vector<unsigned char> timing = eodtest::readFile(path("gappy/Timing.tql"));
    timing.insert(timing.end(), {9, 0, 40});
    eodtest::writeFile(path("gappy/Timing.tql"), timing);
    const Result torn = run("info " + path("gappy"));
    ASSERT_EQ(torn.status, 0) << torn.err;
    EXPECT_NE(torn.out.find("Timing.tql: " + std::to_string(timing.size()) +
                            " bytes, 35 records\n  frames: 35"),
              std::string::npos)
        << torn.out;
    EXPECT_NE(torn.out.find("the file ends inside a record"), std::string::npos) << torn.out;
}

TEST_F(IndexTools, CatByTimeSeeksThroughTheIndexAndKeepsExactlyTheFramesInRange) {
    ASSERT_EQ(run("recover " + path("rec") + " " + path("indexed")).status, 0);
    expectIndexed(path("indexed"));
    for (const char* text : {"0.1:0.2", "0:0", "0.3:", ":0.05", "100:200"}) {
        const std::string range = text;
        const Result scanned = run("cat --time " + range + " " + path("rec"));
        const Result seeked = run("cat --time " + range + " " + path("indexed"));
        ASSERT_EQ(scanned.status, 0) << scanned.err;
        EXPECT_EQ(seeked.status, 0) << seeked.err;
        EXPECT_EQ(seeked.out, scanned.out) << range;
        const Result jsonl = run("cat --format jsonl --time " + range + " " + path("indexed"));
        EXPECT_EQ(jsonl.out, run("cat --format jsonl --time " + range + " " + path("rec")).out) << range;
    }
}
