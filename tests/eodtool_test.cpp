// End to end: the built `eod` command, run as a user would run it.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <eod/engineoutputdata.h>
#include <eod/io/filewriter.h>
#include <eod/timingoutputdata.h>

#include "eodtoolrun.h"

namespace fs = std::filesystem;
using eodtest::EodTool;
using eodtest::Result;

namespace {

// Frames with planted faults: 0 1 2 5 5 3 (a gap at 4, a duplicate 5, 3 out of order),
// then a record cut off after its first 4 bytes.
std::size_t writeDamagedRecording(const std::string& file) {
    std::vector<unsigned char> bytes;
    for (unsigned int n : {0u, 1u, 2u, 5u, 5u, 3u}) {
        tq::eod::EngineOutputData frame;
        frame.setFrameNum(n);
        frame.addSubObject(boost::shared_ptr<tq::eod::Serializable>(new tq::eod::TimingOutputData()));
        frame.serialize(bytes);
    }
    const std::size_t good = bytes.size();
    bytes.insert(bytes.end(), bytes.begin(), bytes.begin() + 4);
    std::ofstream(file, std::ios_base::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return good;
}

}  // namespace

TEST_F(EodTool, DemoRecordsReplaysAndChecksEveryFrame) {
    const Result r = run("demo --frames 120 --out " + path("demo"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("120 synthetic frames"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("every frame came back equal"), std::string::npos);
    EXPECT_NE(r.out.find("frames/s"), std::string::npos);
    EXPECT_TRUE(fs::exists(path("demo/FaceSet.tql")));
    EXPECT_TRUE(fs::exists(path("demo/Timing.tql")));
}

TEST_F(EodTool, ServedSyntheticFramesAreRecordedFrameForFrame) {
    // The server picks a free port and says which on stderr.
    const std::string port = serveSynthetic("--frames 200 --rate 2000");
    ASSERT_FALSE(port.empty());

    const Result recorded = run("record --connect 127.0.0.1:" + port + " --out " + path("live") +
                                " --frames 200 --idle 10");
    ASSERT_EQ(recorded.status, 0) << recorded.err;
    EXPECT_NE(recorded.out.find("200 frames recorded"), std::string::npos) << recorded.out;
    EXPECT_NE(recorded.out.find("gaps: none"), std::string::npos);

    ASSERT_EQ(run("demo --frames 200 --out " + path("reference")).status, 0);
    const Result live = run("cat " + path("live"));
    const Result reference = run("cat " + path("reference"));
    ASSERT_EQ(live.status, 0) << live.err;
    EXPECT_EQ(live.out, reference.out);
    EXPECT_EQ(std::count(live.out.begin(), live.out.end(), '\n'), 201);
}

TEST_F(EodTool, InfoReportsPlantedGapsDuplicatesDisorderAndTheTornTail) {
    const std::size_t good = writeDamagedRecording(path("damaged.raw"));
    const Result r = run("info " + path("damaged.raw"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("frames: 6, frame numbers 0..5"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("gaps: 1 missing frame numbers: 4\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("duplicates: 1 frame numbers: 5 (x2)\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("out of order: 1 frames: 3 after 5"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("unknown ids skipped: none"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("last good record ends at byte " + std::to_string(good) + " of " +
                         std::to_string(good + 4)),
              std::string::npos)
        << r.out;
}

TEST_F(EodTool, CatPrintsTheHeaderThenOneTabSeparatedLinePerFrame) {
    ASSERT_EQ(run("demo --frames 10 --out " + path("demo")).status, 0);
    const Result r = run("cat " + path("demo") + " --ids 10 --frames 2:4");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find('\n')),
              "FRAME_NUM\tTiming.EXPERIMENT_TIME\tTiming.GMT_S\tTiming.GMT_MS\tTiming.DELAY\t"
              "Timing.ANNOTATION_ID");
    std::istringstream lines(r.out);
    std::string line;
    std::vector<std::string> frames;
    std::getline(lines, line);
    while (std::getline(lines, line)) frames.push_back(line.substr(0, line.find('\t')));
    EXPECT_EQ(frames, (std::vector<std::string>{"2", "3", "4"}));

    // --time counts seconds from the first timing record (frames at 60 Hz), --frames A:B
    // frame numbers; both, with ids, pick the same frames however the table is printed.
    const Result timed = run("cat " + path("demo") + " --ids 10 --time 0.03:0.07");
    ASSERT_EQ(timed.status, 0) << timed.err;
    EXPECT_EQ(timed.out, r.out);
    const Result bad = run("cat " + path("demo") + " --time 5:1");
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.err.find("--time"), std::string::npos) << bad.err;
}

TEST_F(EodTool, CatOfATornRecordingPrintsEveryGoodFrameThenFails) {
    writeDamagedRecording(path("damaged.raw"));
    const Result r = run("cat " + path("damaged.raw"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err.compare(0, 5 + path("damaged.raw").size(), "eod: " + path("damaged.raw")), 0)
        << r.err;
    std::istringstream lines(r.out);
    std::string line;
    std::vector<std::string> frames;
    std::getline(lines, line);
    while (std::getline(lines, line)) frames.push_back(line.substr(0, line.find('\t')));
    EXPECT_EQ(frames, (std::vector<std::string>{"0", "1", "2", "5", "5", "3"}));
}

TEST_F(EodTool, CompressThenDecompressGivesTheRawFileBack) {
    ASSERT_EQ(run("demo --frames 50 --out " + path("demo")).status, 0);
    ASSERT_EQ(run("compress " + path("demo/FaceSet.tql") + " " + path("faces.z")).status, 0);
    ASSERT_EQ(run("decompress " + path("faces.z") + " " + path("faces.raw")).status, 0);
    EXPECT_EQ(eodtest::readText(path("faces.raw")), eodtest::readText(path("demo/FaceSet.tql")));
    EXPECT_LT(fs::file_size(path("faces.z")), fs::file_size(path("faces.raw")));
}

TEST_F(EodTool, FailuresExitWithOneClearLine) {
    std::ofstream(path("notes.txt")) << "not a recording\n";
    struct Case {
        std::string args;
        int status;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"info " + path("missing"), 1, "eod: " + path("missing") + ": no such file or directory\n"},
        {"cat " + path("missing"), 1, "eod: " + path("missing") + ": no such file or directory\n"},
        {"info " + path("notes.txt"), 1,
         "eod: " + path("notes.txt") + ": not a record file (no record in it can be decoded)\n"},
        {"record --connect 127.0.0.1:1 --out " + path("x"), 1,
         "eod: 127.0.0.1:1: Could not connect TCP socket to address.: The attempt to connect "
         "was forcefully rejected.\n"},
        {"decompress " + path("notes.txt") + " " + path("y"), 1, ""},
        {"serve --synthetic --port 70000", 2, ""},
        {"frobnicate", 2, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run(c.args);
        EXPECT_EQ(r.status, c.status);
        if (!c.message.empty()) {
            EXPECT_EQ(r.err, c.message);
        }
        if (c.status == 1) {
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        }
        EXPECT_EQ(r.out, "");
    }
    EXPECT_EQ(run("--help").status, 0);
    EXPECT_EQ(run("info --help").status, 0);
}
