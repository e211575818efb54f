// `eod recover IN OUT`: a repaired copy of a recording (a log directory or one log file).
// Every good record is copied byte for byte, torn tails and corrupt records are dropped and
// listed on stdout (file, byte offset, bytes, frame number), and every log gets a fresh
// index. IN is only read; OUT is built under a temporary name beside it and renamed into
// place when complete, so a failed run leaves nothing behind.

#include <filesystem>
#include <iostream>

#include <eod/eoderror.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logrecovery.h>

#include "commands.h"
#include "outputpath.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

namespace {

void printDropped(std::ostream& os, const std::string& file, const tq::eod::io::LogDamage& d) {
    os << file << ": ";
    if (d.kind == tq::eod::io::LogDamage::TORN_TAIL) {
        os << "truncated: the file ends inside a record at byte " << d.offset;
    } else {
        os << "corrupt record at byte " << d.offset;
    }
    os << " (" << d.bytes << " bytes, ";
    if (d.frame_known) {
        os << "frame " << d.frame_num;
    } else {
        os << "frame number unreadable";
    }
    os << "): dropped\n";
}

}  // namespace

int runRecover(const ConvertOptions& options) {
    const OutputPath out(options.in, options.out);
    const bool directory = fs::is_directory(options.in);
    const std::vector<std::string> logs =
        orToolError("", [&] { return tq::eod::io::recordingLogFiles(options.in); });
    const fs::path temp = out.temporary();
    std::uint64_t kept = 0, dropped = 0;
    try {
        if (directory) fs::create_directory(temp);
        for (const std::string& log : logs) {
            const std::string name = fs::path(log).filename().string();
            const fs::path target = directory ? temp / name : temp;
            const tq::eod::io::LogRecovery r = tq::eod::io::recoverLog(log, target.string());
            kept += r.records_kept;
            for (const tq::eod::io::LogDamage& d : r.dropped) {
                printDropped(std::cout, name, d);
                ++dropped;
            }
        }
        out.commit(directory);
    } catch (const tq::eod::EODError& e) {
        out.discard();
        throw ToolError(options.in + ": " + e.what());
    } catch (...) {
        out.discard();
        throw;
    }
    std::cout << options.in << ": " << kept << " records kept in " << logs.size()
              << " log files, " << dropped << " dropped; written to " << options.out << '\n';
    return 0;
}

}  // namespace eodtool
