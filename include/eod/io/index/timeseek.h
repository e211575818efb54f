#ifndef EOD_IO_INDEX_TIMESEEK_H
#define EOD_IO_INDEX_TIMESEEK_H

// Frames by time without reading the recording: a binary search over the index of the log
// that holds the timing records, reading one record per step.
//
// The search relies on what the engine guarantees of its timing records: experiment time
// does not go backwards as frame numbers grow. Callers still test each frame they read
// against the time range, so a seek never lets a frame in that is outside it.

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

namespace tq {
namespace eod {
namespace io {

// The experiment time of the frame record at `offset` of a log, when that record is a frame
// holding a timing record; nothing otherwise (the stream's state is cleared either way).
std::optional<double> experimentTimeAt(std::istream& log, std::uint64_t offset);

struct FrameSpan {
    unsigned int first = 0;
    unsigned int last = 0;
};

// The frame numbers whose timing records lie `from`..`to` seconds (both included) after the
// first timing record of the recording at `path` (a log directory: its timing log; a log
// file: the file), through its index (or, without a believed index file, a scan of that one
// log). Nothing when the search cannot answer (frame numbers not in ascending order, records
// without timing, a log that cannot be read): the caller reads the recording instead.
// An empty range gives first > last.
std::optional<FrameSpan> framesInTimeRange(const std::string& path, double from, double to);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
