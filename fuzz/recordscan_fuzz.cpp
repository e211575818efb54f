// The scanner behind `eod info` and its frame ledger, over a fuzzed record file: the scan
// must end, hold memory to the bytes it reads (never a size a header announces), throw
// nothing, and give a ledger that prints and merges.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/fuzzing.h"
#include "tools/recordscan.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    const eodtool::FileScan scan = eodtool::scanRecordStream(in, size, "fuzz");
    // Every record takes at least its 3-byte header.
    EOD_FUZZ_EXPECT(scan.records * 3 <= size);
    EOD_FUZZ_EXPECT(scan.known_records <= scan.records);
    EOD_FUZZ_EXPECT(scan.ledger.numFrames() <= scan.known_records);
    EOD_FUZZ_EXPECT(!scan.ledger.truncated() || scan.ledger.lastGoodEnd() <= size);

    std::ostringstream text;
    scan.ledger.print(text, "  ");
    tq::eod::io::FrameLedger merged;
    merged.mergeFrameNumbers(scan.ledger);
    merged.mergeFrameNumbers(scan.ledger);
    EOD_FUZZ_EXPECT(merged.numFrames() <= scan.ledger.numFrames());
    EOD_FUZZ_EXPECT(merged.numFrames() + merged.numMissing() ==
                    (merged.empty() ? 0 : std::uint64_t(merged.lastFrameNum()) - merged.firstFrameNum() + 1));
    merged.print(text, "");
    return 0;
}
