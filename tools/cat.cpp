// `eod cat PATH [--ids LIST] [--frames A:B] [--format tsv|jsonl] [--upgrade]`: merged
// frames as one table, a header line and then one tab-separated line per frame, as the
// library's log-to-text conversion prints it (utils::logToText, io::OutputDataPrinter). Its
// first pass over the recording finds every record type the table needs, so that the
// columns are fixed before the first line and never shift. JSON Lines need no columns and
// no first pass.

#include <iostream>

#include <eod/io/outputdataprinter.h>
#include <eod/upgrade.h>
#include <eod/utils/outputdatautils.h>

#include "commands.h"
#include "framesource.h"

namespace eodtool {

int runCat(const CatOptions& options) {
    // The range was checked when the command line was read.
    const FrameRange range = parseFrameRange(options.frames).value();
    const std::vector<char> ids(options.ids.begin(), options.ids.end());

    if (options.format == "jsonl") {
        tq::eod::io::OutputDataPrinter printer;
        std::unique_ptr<FrameSource> source = openRecording(options.path, options.upgrade);
        while (const auto frame = nextSelected(*source, range, ids))
            printer.printJson(std::cout, *frame);
        return 0;
    }
    requireRecordingPath(options.path);
    try {
        tq::eod::utils::logToText(
            options.path, std::cout,
            [&](tq::eod::EngineOutputData& frame) {
                if (options.upgrade) tq::eod::upgrade(frame);
                return isSelected(frame, range, ids);
            },
            range.first, range.last);
    } catch (const tq::eod::EODError& e) {
        throw readError(options.path, e);
    }
    return 0;
}

}  // namespace eodtool
