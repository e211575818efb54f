#ifndef EOD_TOOLS_OUTPUTPATH_H
#define EOD_TOOLS_OUTPUTPATH_H

// The output of a command that writes a new recording (a log directory or a log file with
// its index): built under a temporary name beside OUT and renamed into place when complete,
// so that a failed run leaves nothing behind and an existing OUT is never touched.

#include <filesystem>
#include <string>
#include <vector>

namespace eodtool {

class OutputPath {
  public:
    // ToolError when OUT exists, its directory does not, or an input is missing or is OUT.
    OutputPath(const std::vector<std::string>& inputs, const std::string& out);
    OutputPath(const std::string& in, const std::string& out)
        : OutputPath(std::vector<std::string>{in}, out) {}

    // Where to build: a directory to create, or the log file to write (its index beside it).
    std::filesystem::path temporary() const { return _temp; }
    // Renames the temporary directory, or the temporary log and its index, to OUT.
    void commit(bool directory) const;
    // Removes whatever was built.
    void discard() const;

  private:
    std::filesystem::path _out;
    std::filesystem::path _temp;
};

}  // namespace eodtool

#endif
