#ifndef EOD_TESTS_TESTFILES_H
#define EOD_TESTS_TESTFILES_H

// Files for tests: a directory of their own, and whole files read and written as bytes.

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace eodtest {

// A fresh directory, removed with its contents at the end of the scope.
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

// The bytes of the file; none when it cannot be read.
inline std::vector<unsigned char> readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in),
                                      std::istreambuf_iterator<char>());
}

// The file as text; empty when it cannot be read.
inline std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Makes `bytes` the whole content of the file.
inline void writeFile(const std::filesystem::path& path, const std::vector<unsigned char>& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

}  // namespace eodtest

#endif
