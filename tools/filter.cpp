// `eod filter IN OUT [--ids LIST] [--frames A:B] [--time T0:T1] [--every N]`: a new recording
// with the chosen part of IN, each kept record copied byte for byte, and an index for every
// log. The frames are chosen by frame number across the whole recording: those in the frame
// range, whose timing record (experiment time, in seconds from the first timing record) lies
// in the time range, and of those every N-th, starting with the first. --ids keeps the logs
// whose records hold those object ids. IN is only read; OUT is built under a temporary name.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

#include <boost/pointer_cast.hpp>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/index/framerangereader.h>
#include <eod/serializablefactory.h>
#include <eod/timingoutputdata.h>

#include "commands.h"
#include "framesource.h"
#include "logrecords.h"
#include "outputpath.h"
#include "toolerror.h"

namespace eodtool {

namespace fs = std::filesystem;

namespace {

struct Log {
    std::string path;
    std::vector<RecordRef> records;
};

// The object ids a log's records hold, from its first record.
std::set<int> idsOf(const Log& log) {
    std::set<int> ids;
    if (log.records.empty()) return ids;
    std::ifstream in(log.path, std::ios_base::binary);
    const std::vector<unsigned char> bytes = readRecord(in, log.path, log.records.front());
    int pos = 0;
    const auto frame = boost::dynamic_pointer_cast<tq::eod::EngineOutputData>(
        tq::eod::SerializableFactory::newObject(bytes, pos));
    if (frame) {
        for (const auto& sub : frame->subObjects()) ids.insert(sub->objectID());
    }
    return ids;
}

// Experiment time by frame number, from every log record that holds a timing record.
std::map<unsigned int, double> timesOf(const std::vector<Log>& logs) {
    std::map<unsigned int, double> times;
    for (const Log& log : logs) {
        tq::eod::io::EngineOutputDataFileReader reader;
        reader.openFile(log.path);
        while (const auto frame = reader.readData()) {
            const auto timing = frame->timingOutputData();
            if (!timing) break;  // not the timing log
            times.emplace(frame->frameNum(), timing->experimentTime());
        }
    }
    return times;
}

}  // namespace

int runFilter(const FilterOptions& options) {
    const OutputPath out(options.in, options.out);
    const bool directory = fs::is_directory(options.in);
    std::vector<Log> logs;
    orToolError("", [&] {
        for (const std::string& path : tq::eod::io::recordingLogFiles(options.in)) {
            logs.push_back({path, readRecordRefs(path)});
        }
    });
    if (!options.ids.empty()) {
        logs.erase(std::remove_if(logs.begin(), logs.end(),
                                  [&](const Log& log) {
                                      for (int id : idsOf(log)) {
                                          if (std::count(options.ids.begin(), options.ids.end(), id)) {
                                              return false;
                                          }
                                      }
                                      return true;
                                  }),
                   logs.end());
        if (logs.empty()) throw ToolError(options.in + ": no log holds the ids given with --ids");
    }

    // The frames of the whole recording, then the ranges, then every N-th.
    const FrameRange range = parseFrameRange(options.frames).value();
    std::set<unsigned int> numbers;
    for (const Log& log : logs) {
        for (const RecordRef& r : log.records) numbers.insert(r.frame_num);
    }
    std::set<unsigned int> kept;
    const TimeRange time_range = parseTimeRange(options.time).value();
    std::map<unsigned int, double> times;
    if (time_range.given) {
        times = timesOf(logs);
        if (times.empty()) throw ToolError(options.in + ": --time needs timing records, there are none");
    }
    const double t0 = times.empty() ? 0 : times.begin()->second;
    std::uint64_t n = 0;
    for (unsigned int number : numbers) {
        if (!range.contains(number)) continue;
        if (time_range.given) {
            const auto t = times.find(number);
            if (t == times.end() || !time_range.contains(t->second - t0)) continue;
        }
        if (n++ % options.every == 0) kept.insert(number);
    }

    const fs::path temp = out.temporary();
    std::uint64_t records = 0;
    try {
        if (directory) fs::create_directory(temp);
        for (const Log& log : logs) {
            const fs::path target = directory ? temp / fs::path(log.path).filename() : temp;
            std::ifstream in(log.path, std::ios_base::binary);
            LogCopy copy(target.string());
            for (const RecordRef& r : log.records) {
                if (!kept.count(r.frame_num)) continue;
                copy.append(r.frame_num, readRecord(in, log.path, r));
                ++records;
            }
            copy.close();
        }
        out.commit(directory);
    } catch (...) {
        out.discard();
        throw;
    }
    std::cout << options.out << ": " << kept.size() << " frames, " << records << " records in "
              << logs.size() << " log files\n";
    return 0;
}

}  // namespace eodtool
