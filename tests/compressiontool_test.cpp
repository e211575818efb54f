// `eod compress --profile`, `eod decompress` of a container and `eod demo --images`, run as
// a user would.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <eod/io/filereader.h>

#include "eodtoolrun.h"
#include "recordtesting.h"
#include "testfiles.h"
#include "testing/syntheticframe.h"

namespace fs = std::filesystem;
using eodtest::EodTool;
using eodtest::Result;

namespace {

TEST_F(EodTool, DemoWithImagesCompressesAndChecksEveryFrame) {
    const Result r = run("demo --images --frames 40 --out " + path("demo"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("every frame came back equal apart from the VP8 pixels"),
              std::string::npos)
        << r.out;
    EXPECT_TRUE(fs::exists(path("demo/demo.eodc")));
}

TEST_F(EodTool, RecordingThroughAContainerComesBackFrameForFrame) {
    ASSERT_EQ(run("demo --frames 45 --out " + path("demo")).status, 0);
    for (const char* profile : {"lossless", "compact", "fast"}) {
        SCOPED_TRACE(profile);
        const Result c = run(std::string("compress --profile ") + profile + " " + path("demo") +
                             " " + path("rec.eodc"));
        ASSERT_EQ(c.status, 0) << c.err;
        const Result d = run("decompress " + path("rec.eodc") + " " + path("rec.raw"));
        ASSERT_EQ(d.status, 0) << d.err;
        tq::eod::io::FileReader reader;
        ASSERT_TRUE(reader.open(path("rec.raw")));
        unsigned int n = 0;
        while (!reader.atEnd()) {
            unsigned int status = 0;
            const auto frame = reader.read(status);
            ASSERT_TRUE(frame);
            EXPECT_EQ(eodtest::encode(*frame), eodtest::encode(*eodtesting::syntheticFrame(n++)));
        }
        EXPECT_EQ(n, 45u);
        EXPECT_EQ(leftoverPartials(), 0);
    }
    // cat and info read the container itself: the same table as the recording it holds.
    ASSERT_EQ(run("compress --profile lossless " + path("demo") + " " + path("exact.eodc")).status,
              0);
    const Result from_logs = run("cat --frames 10:19 " + path("demo"));
    const Result from_container = run("cat --frames 10:19 " + path("exact.eodc"));
    ASSERT_EQ(from_logs.status, 0) << from_logs.err;
    EXPECT_EQ(from_container.status, 0) << from_container.err;
    EXPECT_EQ(from_container.out, from_logs.out);
    const Result info = run("info " + path("exact.eodc"));
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("duration:"), std::string::npos) << info.out;
}

TEST_F(EodTool, ContainerFailuresLeaveNoOutput) {
    ASSERT_EQ(run("demo --frames 5 --out " + path("demo")).status, 0);
    EXPECT_EQ(run("compress --profile nope " + path("demo") + " " + path("x.eodc")).status, 2);
    EXPECT_FALSE(fs::exists(path("x.eodc")));
    ASSERT_EQ(run("compress --profile compact " + path("demo") + " " + path("x.eodc")).status, 0);
    // Cut inside the first frame group: the file is torn, and decompressing it fails.
    const auto bytes = eodtest::readFile(path("x.eodc"));
    eodtest::writeFile(path("torn.eodc"),
                       std::vector<unsigned char>(bytes.begin(), bytes.begin() + bytes.size() / 2));
    const Result r = run("decompress " + path("torn.eodc") + " " + path("y.raw"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "eod: " + path("torn.eodc") + ": the file ends inside a frame (torn tail)\n");
    EXPECT_FALSE(fs::exists(path("y.raw")));
    EXPECT_EQ(leftoverPartials(), 0);
}

}  // namespace
