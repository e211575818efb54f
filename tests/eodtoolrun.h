#ifndef EOD_TESTS_EODTOOLRUN_H
#define EOD_TESTS_EODTOOLRUN_H

// Runs the built `eod` command as a user would, in a directory of the test's own, with
// stdout and stderr captured. EOD_TOOL_PATH names the binary (set by tests/CMakeLists.txt).

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "testfiles.h"

namespace eodtest {

namespace fs = std::filesystem;

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

class EodTool : public ::testing::Test {
protected:
    void SetUp() override {
        _dir = fs::temp_directory_path() /
               ("eodtool_test_" + std::to_string(::getpid()) + "_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(_dir);
        fs::create_directories(_dir);
    }
    void TearDown() override { fs::remove_all(_dir); }

    // Runs `eod ARGS` with stdout and stderr captured in files.
    Result run(const std::string& args) {
        const fs::path out = _dir / "stdout", err = _dir / "stderr";
        const std::string command = std::string(EOD_TOOL_PATH) + " " + args + " >" + out.string() +
                                    " 2>" + err.string() + " </dev/null";
        Result r;
        const int raw = std::system(command.c_str());
        r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        r.out = readText(out);
        r.err = readText(err);
        return r;
    }

    std::string path(const std::string& name) const { return (_dir / name).string(); }

    // Files a run left under a temporary output name ("*.partial-*"), anywhere below the
    // test's directory: a failed or finished run leaves none.
    int leftoverPartials() const {
        int found = 0;
        for (const auto& entry : fs::recursive_directory_iterator(_dir)) {
            if (entry.path().filename().string().find(".partial") != std::string::npos) ++found;
        }
        return found;
    }

    fs::path _dir;
};

}  // namespace eodtest

#endif
