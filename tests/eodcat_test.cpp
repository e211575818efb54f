// End to end: the table of `eod cat`, the command line's usage errors, `--ids`, `ids`,
// `--version` and `serve --host/--frames`, on the built `eod` command.

#include <gtest/gtest.h>

#include <algorithm>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <string>
#include <vector>

#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/facesetoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/irpodstateoutputdata.h>
#include <eod/timingoutputdata.h>
#include <eod/version.h>
#include <nlohmann/json.hpp>

#include "eodtoolrun.h"

using eodtest::EodTool;
using eodtest::Result;
using namespace tq::eod;

namespace {

template <class T>
boost::shared_ptr<T> add(SerializableComposite& parent, T* record) {
    boost::shared_ptr<T> shared(record);
    parent.addSubObject(shared);
    return shared;
}

// Frame 10: timing, engine state (whose IR pod repeats the title IR_POS_X), two faces.
// Frame 11: no timing, one face. Frame 12: no engine state, two faces. Every value says
// where it belongs: head x of face f in frame n is 100 * n + f.
void writeMixedRecording(const std::string& file) {
    std::vector<unsigned char> bytes;
    for (unsigned int n : {10u, 11u, 12u}) {
        EngineOutputData frame;
        frame.setFrameNum(n);
        if (n != 11) add(frame, new TimingOutputData())->setExperimentTime(n + 0.5);
        if (n != 12) {
            auto state = add(frame, new EngineStateOutputData(1));
            add(*state, new IRPodStateOutputData())->setPosition({n + 0.25f, 7.0f, n + 0.75f});
        }
        for (int f = 0; f < (n == 11 ? 1 : 2); ++f) {
            auto face = add(frame, new FaceSetOutputData());
            add(*face, new HeadOutputDataV2())->setHeadPosition({100.0 * n + f, -1.0, -2.0});
        }
        frame.serialize(bytes);
    }
    eodtest::writeFile(file, bytes);
}

}  // namespace

TEST_F(EodTool, CatTableLoadsIntoPandasWithEveryValueInItsColumn) {
    writeMixedRecording(path("mixed.raw"));
    const Result cat = run("cat " + path("mixed.raw"));
    ASSERT_EQ(cat.status, 0) << cat.err;
    std::ofstream(path("table.tsv")) << cat.out;
    // pandas renames a repeated column ("X.1") and shifts values of short rows without a
    // word: the script fails on either, then prints the cells asked for, NaN where empty.
    std::ofstream(path("check.py"))
        << "import sys, pandas\n"
           "t = pandas.read_csv(sys.argv[1], sep='\\t')\n"
           "assert t.columns.is_unique and not any(c.endswith('.1') for c in t.columns)\n"
           "cols = ['FRAME_NUM', 'Timing.EXPERIMENT_TIME', 'EngineState.IRPodState.IR_POS_X',\n"
           "        'EngineState.IRPodState.IR_POS_X_2', 'FaceSet0.HeadV2.HPOS_FILT_X',\n"
           "        'FaceSet1.HeadV2.HPOS_FILT_X', 'FaceSet1.HeadV2.HPOS_FILT_Y']\n"
           "assert list(t.columns[:2]) == cols[:2], list(t.columns)\n"
           "for _, row in t.iterrows(): print(' '.join(str(row[c]) for c in cols))\n";
    // Debian's interpreter, the one python3-pandas is installed for.
    const std::string python = "/usr/bin/python3 " + path("check.py") + " " + path("table.tsv") +
                               " >" + path("cells") + " 2>" + path("python.err");
    ASSERT_EQ(std::system(python.c_str()), 0) << eodtest::readText(path("python.err"));
    EXPECT_EQ(eodtest::readText(path("cells")),
              "10.0 10.5 10.25 10.75 1000.0 1001.0 -1.0\n"
              "11.0 nan 11.25 11.75 1100.0 nan nan\n"
              "12.0 12.5 nan nan 1200.0 1201.0 -1.0\n");
}

TEST_F(EodTool, CatIdsFindRecordsInsideFaceSets) {
    writeMixedRecording(path("mixed.raw"));
    const Result r = run("cat " + path("mixed.raw") + " --ids 16 --frames 11:12");
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream lines(r.out);
    std::string header, first, second;
    std::getline(lines, header);
    std::getline(lines, first);
    std::getline(lines, second);
    EXPECT_EQ(header.substr(0, header.find("\tFaceSet0.HeadV2.HPOS_FILT_Y")),
              "FRAME_NUM\tFaceSet0.HeadV2.TRACK_STATE\tFaceSet0.HeadV2.HPOS_FILT_X");
    EXPECT_EQ(first.substr(0, 10), "11\t0\t1100\t");
    EXPECT_EQ(second.substr(0, 10), "12\t0\t1200\t");
    EXPECT_EQ(header.find("Timing"), std::string::npos);
}

TEST_F(EodTool, IdsListsTheLogNamesAndHelpPointsToIt) {
    const Result ids = run("ids");
    ASSERT_EQ(ids.status, 0);
    EXPECT_NE(ids.out.find("  16  HeadV2\n"), std::string::npos) << ids.out;
    EXPECT_NE(ids.out.find("  94  FaceSet\n"), std::string::npos) << ids.out;
    EXPECT_NE(run("--help").out.find("16 HeadV2,"), std::string::npos);
    const Result version = run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, std::string(libraryVersion()) + "\n");
}

TEST_F(EodTool, UsageErrorsExitTwoNamingTheArgument) {
    writeMixedRecording(path("mixed.raw"));
    const std::string rec = path("mixed.raw");
    struct Case {
        std::string args;
        std::string named;
    };
    const std::vector<Case> cases = {
        {"cat " + rec + " --frames 5", "--frames"},
        {"cat " + rec + " --frames -5:10", "'-5:10'"},
        {"cat " + rec + " --frames 200:100", "'200:100'"},
        {"cat " + rec + " --frames 1:99999999999", "'1:99999999999'"},
        {"cat " + rec + " --ids 300", "'300'"},
        {"cat " + rec + " --ids 12", "object id 12 has no log name"},
        {"serve --port 5000", "give a recording PATH or --synthetic"},
        {"serve --synthetic --port 0 --frames 0", "--frames"},
        {"record --connect 127.0.0.1 --out " + path("x"), "'127.0.0.1'"},
        {"record --connect 127.0.0.1:http --out " + path("x"), "'127.0.0.1:http'"},
        // Refused before connecting: nothing listens on port 1, and nothing is created.
        {"record --connect 127.0.0.1:1 --out " + path("x") + " --ids 16,13,12", "object id 13"},
        {"demo --frames 0 --out " + path("x"), "--frames"},
        {"dmeo", "unknown subcommand 'dmeo' (did you mean 'demo'?)"},
        {"inof " + rec, "did you mean 'info'?"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Result r = run(c.args);
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find(c.named), std::string::npos) << r.err;
        EXPECT_LT(r.err.size(), 200u) << r.err;
        EXPECT_EQ(r.out, "");
    }
    EXPECT_FALSE(eodtest::fs::exists(path("x")));
}

TEST_F(EodTool, ServeListensOnTheLoopbackByDefaultAndStopsAfterFrames) {
    writeMixedRecording(path("mixed.raw"));
    // Two of the three frames have timing (--ids 10), and --frames 2 stops after them: a
    // recorder gets both, timing only, and sees the connection close.
    const std::string serve = std::string(EOD_TOOL_PATH) + " serve " + path("mixed.raw") +
                              " --port 0 --frames 2 --ids 10 --rate 1000 2>" + path("serve.err") +
                              " >/dev/null </dev/null & echo $! >" + path("serve.pid");
    ASSERT_EQ(std::system(serve.c_str()), 0);
    struct Stop {
        std::string pid_file;
        ~Stop() { std::system(("kill " + eodtest::readText(pid_file) + " 2>/dev/null").c_str()); }
    } stop{path("serve.pid")};
    std::string said;
    for (int i = 0; i < 100 && said.find(")\n") == std::string::npos; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        said = eodtest::readText(path("serve.err"));
    }
    ASSERT_NE(said.find(" (127.0.0.1)\n"), std::string::npos) << said;
    const std::string port =
        said.substr(said.find("port ") + 5, said.find(" (") - said.find("port ") - 5);
    const Result r =
        run("record --connect 127.0.0.1:" + port + " --out " + path("rec") + " --idle 2");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(": 2 frames recorded"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("frame numbers 10..12"), std::string::npos) << r.out;
    std::vector<std::string> logs;
    for (const auto& entry : eodtest::fs::directory_iterator(path("rec"))) {
        logs.push_back(entry.path().filename().string());
    }
    std::sort(logs.begin(), logs.end());
    EXPECT_EQ(logs, (std::vector<std::string>{"Timing.itql", "Timing.tql"}));  // log and index
}

TEST_F(EodTool, InfoSummaryCountsIncompleteFramesAndTheFrameRate) {
    writeMixedRecording(path("mixed.raw"));
    const Result raw = run("info " + path("mixed.raw"));
    ASSERT_EQ(raw.status, 0) << raw.err;
    EXPECT_NE(
        raw.out.find("\nsummary:\n  frames: 3, frame numbers 10..12\n"
                     "  duration: 2 s, mean frame rate 0.5 Hz (from 2 timing records)\n"
                     "  incomplete frames: 2 (some record types missing; the first at frame 11)\n"),
        std::string::npos)
        << raw.out;

    // A log directory whose timing log stops after 100 of 300 frames (36 bytes a record).
    ASSERT_EQ(run("demo --frames 300 --out " + path("demo")).status, 0);
    eodtest::fs::resize_file(path("demo/Timing.tql"), 100 * 36);
    const Result dir = run("info " + path("demo"));
    ASSERT_EQ(dir.status, 0) << dir.err;
    EXPECT_NE(dir.out.find("\nsummary:\n  frames: 300, frame numbers 0..299\n  duration: 1.65 s, "
                           "mean frame rate 60 Hz (from 100 timing records)\n"
                           "  incomplete frames: 200 (some record types missing; the first at "
                           "frame 100)\n"),
              std::string::npos)
        << dir.out;
    // Not a terminal: no progress on stderr.
    EXPECT_EQ(dir.err, "");
}

TEST_F(EodTool, CatJsonLinesNestRecordsAndKeepFacesApart) {
    writeMixedRecording(path("mixed.raw"));
    const Result r = run("cat " + path("mixed.raw") + " --format jsonl");
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream lines(r.out);
    std::vector<nlohmann::json> frames;
    for (std::string line; std::getline(lines, line);)
        frames.push_back(nlohmann::json::parse(line));
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(frames[0]["FRAME_NUM"], 10);
    EXPECT_EQ(frames[0]["Timing"]["EXPERIMENT_TIME"], 10.5);
    EXPECT_EQ(frames[0]["EngineState"]["IRPodState"]["IR_POS_X_2"], 10.75);
    EXPECT_EQ(frames[0]["FaceSet"][1]["HeadV2"]["HPOS_FILT"],
              nlohmann::json::parse("[1001,-1,-2]"));
    EXPECT_FALSE(frames[1].contains("Timing"));
    EXPECT_EQ(frames[1]["FaceSet"].size(), 1u);
    EXPECT_EQ(frames[2]["FaceSet"][0]["HeadV2"]["HPOS_FILT"][0], 1200);
    EXPECT_FALSE(frames[2].contains("EngineState"));
    EXPECT_EQ(run("cat " + path("mixed.raw") + " --format xml").status, 2);
}
