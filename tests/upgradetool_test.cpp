// End to end: `eod upgrade IN OUT` on recordings written in the older layout.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include <eod/engineoutputdata.h>
#include <eod/headoutputdata.h>
#include <eod/io/filewriter.h>
#include <eod/timingoutputdata.h>
#include <eod/upgrade.h>

#include "eodtoolrun.h"

namespace fs = std::filesystem;
using eodtest::EodTool;
using eodtest::Result;
using tq::eod::EngineOutputData;

namespace {

using Bytes = std::vector<unsigned char>;

// Frames 0..2: the first two hold a first-generation head directly in the frame, the last is
// already current (timing only).
std::vector<EngineOutputData> olderFrames() {
    std::vector<EngineOutputData> frames(3);
    for (unsigned int n = 0; n < frames.size(); ++n) {
        frames[n].setFrameNum(n);
        frames[n].addSubObject(boost::make_shared<tq::eod::TimingOutputData>());
        if (n < 2) {
            const auto head = boost::make_shared<tq::eod::HeadOutputData>();
            head->setHeadPositionConfidence(0.5f);
            frames[n].addSubObject(head);
        }
    }
    return frames;
}

Bytes encodeAll(const std::vector<EngineOutputData>& frames) {
    Bytes bytes;
    for (const EngineOutputData& frame : frames) frame.serialize(bytes);
    return bytes;
}

}  // namespace

TEST_F(EodTool, UpgradeWritesEveryFrameInTheCurrentLayout) {
    std::vector<EngineOutputData> frames = olderFrames();
    eodtest::writeFile(path("old.raw"), encodeAll(frames));
    const Result r = run("upgrade " + path("old.raw") + " " + path("new.raw"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, path("new.raw") + ": 3 frames, 2 upgraded\n");
    EXPECT_EQ(r.err, "");

    for (EngineOutputData& frame : frames) tq::eod::upgrade(frame);
    EXPECT_EQ(eodtest::readFile(path("new.raw")), encodeAll(frames));
    EXPECT_FALSE(fs::exists(path("new.raw.partial")));

    // An upgraded recording upgrades to itself.
    ASSERT_EQ(run("upgrade " + path("new.raw") + " " + path("again.raw")).status, 0);
    EXPECT_EQ(eodtest::readFile(path("again.raw")), encodeAll(frames));

    // cat --upgrade reads the old recording as the upgraded copy prints.
    const Result upgraded = run("cat " + path("new.raw"));
    const Result on_the_fly = run("cat --upgrade " + path("old.raw"));
    ASSERT_EQ(upgraded.status, 0) << upgraded.err;
    EXPECT_EQ(on_the_fly.status, 0) << on_the_fly.err;
    EXPECT_EQ(on_the_fly.out, upgraded.out);
    EXPECT_NE(run("cat " + path("old.raw")).out, upgraded.out);
}

TEST_F(EodTool, UpgradeFailuresLeaveNoOutputAndKeepAnExistingOne) {
    Bytes damaged = encodeAll(olderFrames());
    damaged.insert(damaged.end(), damaged.begin(), damaged.begin() + 4);  // a cut-off record
    eodtest::writeFile(path("damaged.raw"), damaged);
    eodtest::writeFile(path("out.raw"), Bytes{'k', 'e', 'e', 'p'});

    struct Case {
        std::string args;
        int status;
        std::string err_start;
    } cases[] = {
        {"upgrade " + path("damaged.raw") + " " + path("out.raw"), 1,
         "eod: " + path("damaged.raw") + ": "},
        {"upgrade " + path("missing.raw") + " " + path("out.raw"), 1,
         "eod: " + path("missing.raw") + ": no such file or directory"},
        {"upgrade " + path("damaged.raw") + " " + path("no/such/dir/out.raw"), 1,
         "eod: " + path("no/such/dir/out.raw") + ": cannot create file"},
        {"upgrade " + path("damaged.raw"), 2, ""},
    };
    for (const Case& c : cases) {
        const Result r = run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args << "\n" << r.err;
        EXPECT_EQ(r.err.compare(0, c.err_start.size(), c.err_start), 0) << r.err;
        if (c.status == 1) EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(eodtest::readFile(path("out.raw")), (Bytes{'k', 'e', 'e', 'p'}));
        EXPECT_FALSE(fs::exists(path("out.raw.partial")));
    }
}
