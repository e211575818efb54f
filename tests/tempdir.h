#ifndef EOD_TESTS_TEMPDIR_H
#define EOD_TESTS_TEMPDIR_H

// A fresh directory for a test's files, removed with its contents at the end of the scope.

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>

namespace eodtest {

class TempDir {
  public:
    TempDir() {
        static std::atomic<int> counter{0};
        _path = std::filesystem::temp_directory_path() /
                ("eod-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(_path);
        std::filesystem::create_directories(_path);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return _path; }
    std::string file(const std::string& name) const { return (_path / name).string(); }

  private:
    std::filesystem::path _path;
};

}  // namespace eodtest

#endif
