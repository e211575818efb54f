#include "outputpath.h"

#include <unistd.h>

#include <algorithm>

#include <eod/io/index/logindex.h>

#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

OutputPath::OutputPath(const std::vector<std::string>& inputs, const std::string& out) : _out(out) {
    std::error_code ec;
    if (fs::exists(fs::symlink_status(_out, ec))) throw ToolError(out + ": already exists");
    const fs::path parent = _out.has_parent_path() ? _out.parent_path() : fs::path(".");
    if (!fs::is_directory(parent, ec)) throw ToolError(out + ": no such directory " + parent.string());
    const fs::path out_dir = fs::weakly_canonical(parent, ec);
    for (const std::string& in : inputs) {
        if (!fs::exists(in, ec)) throw ToolError(in + ": no such file or directory");
        // Nothing is ever written into an input recording, not even a temporary name.
        const fs::path in_dir = fs::weakly_canonical(in, ec);
        if (fs::is_directory(in_dir, ec) &&
            std::mismatch(in_dir.begin(), in_dir.end(), out_dir.begin(), out_dir.end()).first ==
                in_dir.end()) {
            throw ToolError(out + ": inside the input " + in);
        }
    }
    const fs::path name = _out.filename();
    _temp = parent / ("." + std::to_string(::getpid()) + "-partial-" + name.string());
}

void OutputPath::commit(bool directory) const {
    std::error_code ec;
    if (!directory && fs::exists(tq::eod::io::logIndexPath(_temp.string()), ec)) {
        fs::rename(tq::eod::io::logIndexPath(_temp.string()), tq::eod::io::logIndexPath(_out.string()), ec);
        if (ec) throw ToolError(_out.string() + ": " + ec.message());
    }
    fs::rename(_temp, _out, ec);
    if (ec) {
        if (!directory) fs::remove(tq::eod::io::logIndexPath(_out.string()));
        throw ToolError(_out.string() + ": " + ec.message());
    }
}

void OutputPath::discard() const {
    std::error_code ec;
    fs::remove_all(_temp, ec);
    fs::remove(tq::eod::io::logIndexPath(_temp.string()), ec);
}

}  // namespace eodtool
