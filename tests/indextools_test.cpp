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
