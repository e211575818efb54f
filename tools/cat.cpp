// `eod cat PATH [--ids LIST] [--frames A:B] [--format tsv|jsonl]`: merged frames as one
// table, a header line and then one tab-separated line per frame, printed by the library's
// OutputDataPrinter. A first pass over the recording finds every record type the table
// needs, so that the columns are fixed before the first line and never shift. JSON Lines
// need no columns and no first pass.

#include <iostream>

#include <eod/io/outputdataprinter.h>

#include "commands.h"
#include "framesource.h"

namespace eodtool {

int runCat(const CatOptions& options) {
    // The range was checked when the command line was read.
    const FrameRange range = parseFrameRange(options.frames).value();
    const std::vector<char> ids(options.ids.begin(), options.ids.end());

    tq::eod::io::OutputDataPrinter printer;
    if (options.format == "jsonl") {
        std::unique_ptr<FrameSource> source = openRecording(options.path);
        while (const auto frame = nextSelected(*source, range, ids))
            printer.printJson(std::cout, *frame);
        return 0;
    }
    {
        std::unique_ptr<FrameSource> source = openRecording(options.path);
        while (const auto frame = nextSelected(*source, range, ids)) printer.addColumnsOf(*frame);
    }
    printer.printHeader(std::cout);
    std::unique_ptr<FrameSource> source = openRecording(options.path);
    while (const auto frame = nextSelected(*source, range, ids))
        printer.printData(std::cout, *frame);
    return 0;
}

}  // namespace eodtool
