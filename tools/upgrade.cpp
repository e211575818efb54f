// `eod upgrade IN OUT`: a copy of a recording (log directory, log file or raw record file)
// with every frame brought to the current layout by tq::eod::upgrade, written as a raw
// record file. The copy is written under a temporary name and renamed into place only when
// complete, so a failed run leaves no OUT (and an existing OUT untouched).

#include <cstdint>
#include <filesystem>
#include <iostream>

#include <eod/io/filewriter.h>
#include <eod/upgrade.h>

#include "commands.h"
#include "framesource.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

namespace {

// Removes the temporary file unless the run got as far as renaming it.
class PartialFile {
public:
    explicit PartialFile(const std::string& path) : _path(path) {}
    ~PartialFile() {
        std::error_code ec;
        if (!_kept) fs::remove(_path, ec);
    }
    void keep() { _kept = true; }
    const std::string& path() const { return _path; }

private:
    std::string _path;
    bool _kept = false;
};

}  // namespace

int runUpgrade(const ConvertOptions& options) {
    const std::unique_ptr<FrameSource> source = openRecording(options.in);
    PartialFile partial(options.out + ".partial");
    tq::eod::io::FileWriter writer;
    if (!writer.open(partial.path())) throw ToolError(options.out + ": cannot create file");

    std::uint64_t frames = 0;
    std::uint64_t upgraded = 0;
    while (const boost::shared_ptr<tq::eod::EngineOutputData> frame = source->next()) {
        ++frames;
        if (tq::eod::upgrade(*frame) != 0) ++upgraded;
        if (!writer.writeNoThrow(*frame)) throw ToolError(options.out + ": cannot write");
    }
    // close() does not report the last flush: compare what reached the disk with what was
    // written (the writer counts in 32 bits, hence the modulus).
    const unsigned int written = writer.size();
    writer.close();
    std::error_code ec;
    const std::uintmax_t on_disk = fs::file_size(partial.path(), ec);
    if (ec || static_cast<unsigned int>(on_disk) != written) {
        throw ToolError(options.out + ": cannot write");
    }
    fs::rename(partial.path(), options.out, ec);
    if (ec) throw ToolError(options.out + ": cannot replace: " + ec.message());
    partial.keep();
    std::cout << options.out << ": " << frames << " frames, " << upgraded << " upgraded\n";
    return 0;
}

}  // namespace eodtool
