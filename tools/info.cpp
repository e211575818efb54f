// `eod info PATH`: what a log directory, a log file or a raw record file holds, and the
// frame ledger that says why frames are missing.

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>

#include "commands.h"
#include "recordscan.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

namespace {

void printFrames(std::ostream& os, const FrameLedger& ledger, const std::string& indent) {
    os << indent << "frames: " << ledger.numFrames();
    if (!ledger.empty()) {
        os << ", frame numbers " << ledger.firstFrameNum() << ".." << ledger.lastFrameNum();
    }
    os << '\n';
}

void printIds(std::ostream& os, const FileScan& scan, const std::string& indent) {
    os << indent << "records by object id:\n"
       << indent << "  " << std::setw(4) << "id" << "  " << std::left << std::setw(32) << "name"
       << std::right << std::setw(10) << "count" << std::setw(14) << "bytes" << '\n';
    for (const auto& entry : scan.by_id) {
        os << indent << "  " << std::setw(4) << entry.first << "  " << std::left << std::setw(32)
           << objectName(entry.first) << std::right << std::setw(10) << entry.second.count
           << std::setw(14) << entry.second.bytes << '\n';
    }
}

void printScan(std::ostream& os, const FileScan& scan, const std::string& indent) {
    printFrames(os, scan.ledger, indent);
    printIds(os, scan, indent);
    os << indent << "ledger:\n";
    scan.ledger.print(os, indent + "  ");
}

// A file in which not one record could be decoded is not a record file at all.
void requireRecords(const FileScan& scan) {
    if (scan.size > 0 && scan.known_records == 0) {
        throw ToolError(scan.path + ": not a record file (no record in it can be decoded)");
    }
}

}  // namespace

int runInfo(const InfoOptions& options) {
    std::error_code ec;
    const fs::file_status status = fs::status(options.path, ec);
    if (ec || !fs::exists(status)) throw ToolError(options.path + ": no such file or directory");

    if (!fs::is_directory(status)) {
        const FileScan scan = scanRecordFile(options.path);
        requireRecords(scan);
        std::cout << options.path << ": record file, " << scan.size << " bytes, " << scan.records
                  << " records\n";
        printScan(std::cout, scan, "");
        return 0;
    }

    std::vector<fs::path> logs;
    for (const fs::directory_entry& entry : fs::directory_iterator(options.path, ec)) {
        if (entry.path().extension() != ".tql") continue;
        // One entry that cannot be read as a log (a symlink loop, a FIFO) does not spoil
        // the others: it is reported and left out.
        std::error_code entry_ec;
        if (entry.is_regular_file(entry_ec)) {
            logs.push_back(entry.path());
        } else {
            std::cerr << "eod: " << entry.path().string() << ": skipped: "
                      << (entry_ec ? entry_ec.message() : "not a regular file") << '\n';
        }
    }
    if (ec) throw ToolError(options.path + ": " + ec.message());
    if (logs.empty()) throw ToolError(options.path + ": no log files (*.tql) in this directory");
    std::sort(logs.begin(), logs.end());

    std::vector<FileScan> scans;
    std::uint64_t bytes = 0;
    FrameLedger merged;
    for (const fs::path& log : logs) {
        scans.push_back(scanRecordFile(log.string()));
        bytes += scans.back().size;
        merged.mergeFrameNumbers(scans.back().ledger);
    }

    std::cout << options.path << ": log directory, " << logs.size() << " log files, " << bytes
              << " bytes\n";
    std::cout << "merged ";
    printFrames(std::cout, merged, "");
    std::cout << "merged ";
    merged.printGaps(std::cout);
    std::cout << '\n';
    for (const FileScan& scan : scans) {
        std::cout << '\n' << fs::path(scan.path).filename().string() << ": " << scan.size
                  << " bytes, " << scan.records << " records\n";
        printScan(std::cout, scan, "  ");
    }
    return 0;
}

}  // namespace eodtool
