#ifndef EOD_TESTS_EODTOOLRUN_H
#define EOD_TESTS_EODTOOLRUN_H

// Runs the built `eod` command as a user would, in a directory of the test's own, with
// stdout and stderr captured. EOD_TOOL_PATH names the binary (set by tests/CMakeLists.txt).

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>

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
    void TearDown() override {
        // However the test ended, a server it started does not outlive it.
        if (!_serve_pid.empty()) {
            std::system(("kill " + readText(_serve_pid) + " 2>/dev/null").c_str());
        }
        fs::remove_all(_dir);
    }

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

    // Starts `eod serve --synthetic --port 0 ARGS` in the background and returns the port it
    // listens on (empty when it did not say within 5 s). The server is killed at TearDown.
    std::string serveSynthetic(const std::string& args) {
        const fs::path err = _dir / "serve.err";
        _serve_pid = _dir / "serve.pid";
        const std::string command = std::string(EOD_TOOL_PATH) + " serve --synthetic --port 0 " +
                                    args + " >/dev/null 2>" + err.string() +
                                    " </dev/null & echo $! >" + _serve_pid.string();
        if (std::system(command.c_str()) != 0) return std::string();
        std::smatch port;
        const std::regex listening("listening on port ([0-9]+)");
        std::string text;
        for (int i = 0; i < 100 && !std::regex_search(text, port, listening); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            text = readText(err);
        }
        return std::regex_search(text, port, listening) ? port[1].str() : std::string();
    }

    fs::path _dir;
    fs::path _serve_pid;
};

}  // namespace eodtest

#endif
