// `eod cat PATH [--ids LIST] [--frames A:B] [--time T0:T1] [--format tsv|jsonl] [--upgrade]`:
// merged frames as one table, a header line and then one tab-separated line per frame, as the
// library's log-to-text conversion prints it (utils::logToText, io::OutputDataPrinter). Its
// first pass over the recording finds every record type the table needs, so that the
// columns are fixed before the first line and never shift. JSON Lines need no columns and
// no first pass.

#include <iostream>

#include <eod/io/outputdataprinter.h>
#include <eod/timingoutputdata.h>
#include <eod/upgrade.h>
#include <eod/utils/outputdatautils.h>

#include "commands.h"
#include "framesource.h"

namespace eodtool {

int runCat(const CatOptions& options) {
    // The ranges were checked when the command line was read.
    const TimeRange times = parseTimeRange(options.time).value();
    // Frames outside the time range are not even read where the index can tell.
    const FrameRange range = seekTimeRange(options.path, times, parseFrameRange(options.frames).value());
    const std::vector<char> ids(options.ids.begin(), options.ids.end());
    const double t0 = times.given ? firstExperimentTime(options.path) : 0;
    // A frame without a timing record has no place in a time range.
    const auto in_time = [&](const tq::eod::EngineOutputData& frame) {
        if (!times.given) return true;
        const auto timing = frame.typedSubObject<tq::eod::TimingOutputData>(
            tq::eod::TimingOutputData::THIS_OBJECT_ID);
        return timing && times.contains(timing->experimentTime() - t0);
    };
    const auto select = [&](tq::eod::EngineOutputData& frame) {
        if (options.upgrade) tq::eod::upgrade(frame);
        return in_time(frame) && isSelected(frame, range, ids);
    };

    if (options.format == "jsonl") {
        tq::eod::io::OutputDataPrinter printer;
        std::unique_ptr<FrameSource> source = openRecording(options.path, false, range);
        while (const auto frame = source->next()) {
            if (select(*frame)) printer.printJson(std::cout, *frame);
        }
        return 0;
    }
    requireRecordingPath(options.path);
    try {
        tq::eod::utils::logToText(options.path, std::cout, select, range.first, range.last);
    } catch (const tq::eod::EODError& e) {
        throw readError(options.path, e);
    }
    return 0;
}

}  // namespace eodtool
