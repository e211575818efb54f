#ifndef EOD_PYTHON_FRAMETABLE_H
#define EOD_PYTHON_FRAMETABLE_H

// A recording as the frame table of `eod cat` (io::OutputDataPrinter's columns and values),
// kept as columns of numbers instead of text so that Python wraps them as numpy arrays
// without copying.
//
// Column types: "FRAME_NUM" is int64; a column whose every cell reads as a number is float64,
// with NaN for an empty cell (a frame without that record); a column with any other text
// keeps the cells as strings ("" for an empty cell).

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <eod/engineoutputdata.h>

#include "framereader.h"

namespace eodpy {

struct TableColumn {
    std::string name;
    bool is_text = false;
    std::vector<double> numbers;
    std::vector<std::string> texts;
};

struct FrameTable {
    std::vector<std::int64_t> frame_nums;
    std::vector<TableColumn> columns;  // FRAME_NUM not included
};

struct TableRequest {
    std::string path;
    std::string format;
    // Frame numbers first..last, both included.
    unsigned int first = 0;
    unsigned int last = UINT32_MAX;
    // When not empty: only the columns of the record of that name (the last part of their
    // record path, as "Gaze" in "Eye.Gaze.GAZE_QUAL_R", or a whole path "Eye.Gaze"), and only
    // the frames that hold it.
    std::string record;
};

// Reads the recording twice (columns first, then values), three times when text columns
// turn up. Reader errors propagate.
FrameTable readFrameTable(const TableRequest& request);

}  // namespace eodpy

#endif
