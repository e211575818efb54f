// `eod merge IN... OUT [--prefer first|last]`: one recording from several (two recorders of
// one session, or consecutive sessions). Logs of the same name are joined record by record
// in ascending frame number; where several inputs hold records of one frame in a log, equal
// bytes are kept once, and different bytes are a conflict: without --prefer the merge fails
// and lists the conflicts; with it the first (or last) input given wins and every conflict
// is still listed on stderr. A log file given as IN merges into a log file OUT. The inputs
// are only read; OUT is built under a temporary name.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

#include <eod/eoderror.h>
#include <eod/io/index/framerangereader.h>

#include "commands.h"
#include "logrecords.h"
#include "outputpath.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

namespace {

// The logs of one name across the inputs.
struct Source {
    std::size_t input;
    std::string path;
    std::vector<RecordRef> records;  // sorted by frame number, file order kept within one
};

const std::size_t kMaxConflictsListed = 20;

}  // namespace

int runMerge(const MergeOptions& options) {
    const OutputPath out(options.in, options.out);
    const bool directory = fs::is_directory(options.in.front());
    for (const std::string& in : options.in) {
        if (fs::is_directory(in) != directory) {
            throw ToolError(in + ": inputs must be all directories or all log files");
        }
    }
    std::map<std::string, std::vector<Source>> by_name;
    orToolError("", [&] {
        for (std::size_t i = 0; i < options.in.size(); ++i) {
            for (const std::string& path : tq::eod::io::recordingLogFiles(options.in[i])) {
                Source source{i, path, readRecordRefs(path)};
                std::stable_sort(source.records.begin(), source.records.end(),
                                 [](const RecordRef& a, const RecordRef& b) { return a.frame_num < b.frame_num; });
                by_name[directory ? fs::path(path).filename().string() : std::string()].push_back(
                    std::move(source));
            }
        }
    });

    const fs::path temp = out.temporary();
    std::uint64_t conflicts = 0, records = 0;
    try {
        if (directory) fs::create_directory(temp);
        for (auto& named : by_name) {
            std::vector<Source>& sources = named.second;
            std::vector<std::ifstream> files;
            for (const Source& s : sources) files.emplace_back(s.path, std::ios_base::binary);
            std::vector<std::size_t> next(sources.size(), 0);
            LogCopy copy(directory ? (temp / named.first).string() : temp.string());
            for (;;) {
                // The smallest frame number left in any input, and each input's records of it.
                bool any = false;
                unsigned int frame = 0;
                for (std::size_t s = 0; s < sources.size(); ++s) {
                    if (next[s] < sources[s].records.size() &&
                        (!any || sources[s].records[next[s]].frame_num < frame)) {
                        frame = sources[s].records[next[s]].frame_num;
                        any = true;
                    }
                }
                if (!any) break;
                std::vector<std::vector<std::vector<unsigned char>>> held(sources.size());
                std::vector<std::size_t> holders;
                for (std::size_t s = 0; s < sources.size(); ++s) {
                    while (next[s] < sources[s].records.size() &&
                           sources[s].records[next[s]].frame_num == frame) {
                        held[s].push_back(readRecord(files[s], sources[s].path, sources[s].records[next[s]++]));
                    }
                    if (!held[s].empty()) holders.push_back(s);
                }
                std::size_t chosen = holders.front();
                for (std::size_t h : holders) {
                    if (held[h] == held[holders.front()]) continue;
                    if (++conflicts <= kMaxConflictsListed) {
                        std::cerr << "conflict: " << fs::path(sources[h].path).filename().string()
                                  << " frame " << frame << ": " << options.in[sources[holders.front()].input]
                                  << " and " << options.in[sources[h].input] << " differ\n";
                    }
                }
                if (options.prefer == "last") chosen = holders.back();
                for (const auto& record : held[chosen]) {
                    copy.append(frame, record);
                    ++records;
                }
            }
            copy.close();
        }
        if (conflicts > kMaxConflictsListed) {
            std::cerr << "... " << conflicts - kMaxConflictsListed << " more conflicts\n";
        }
        if (conflicts > 0 && options.prefer.empty()) {
            throw ToolError(std::to_string(conflicts) +
                            " conflicts (the same record type in the same frame with different "
                            "bytes); choose with --prefer first|last");
        }
        out.commit(directory);
    } catch (...) {
        out.discard();
        throw;
    }
    std::cout << options.out << ": " << records << " records in " << by_name.size() << " log files";
    if (conflicts > 0) std::cout << ", " << conflicts << " conflicts resolved by --prefer " << options.prefer;
    std::cout << '\n';
    return 0;
}

}  // namespace eodtool
