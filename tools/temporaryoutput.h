#ifndef EOD_TOOLS_TEMPORARYOUTPUT_H
#define EOD_TOOLS_TEMPORARYOUTPUT_H

// An output file written under a temporary name beside it ("OUT.partial-<pid>") and renamed
// to OUT by commit() only when the run did all it was asked: a failed run leaves no partial
// OUT behind, and an OUT that existed before stays as it was.

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "toolerror.h"

namespace eodtool {

class TemporaryOutput {
public:
    explicit TemporaryOutput(const std::string& out)
        : _out(out), _path(out + ".partial-" + std::to_string(::getpid())) {}
    ~TemporaryOutput() {
        std::error_code ignored;
        if (!_committed) std::filesystem::remove(_path, ignored);
    }
    TemporaryOutput(const TemporaryOutput&) = delete;
    TemporaryOutput& operator=(const TemporaryOutput&) = delete;

    // Where to write.
    const std::string& path() const { return _path; }
    // Gives the written file its name. ToolError naming OUT when the rename fails.
    void commit() {
        std::error_code ec;
        std::filesystem::rename(_path, _out, ec);
        if (ec) throw ToolError(_out + ": " + ec.message());
        _committed = true;
    }

private:
    std::string _out;
    std::string _path;
    bool _committed = false;
};

}  // namespace eodtool

#endif
