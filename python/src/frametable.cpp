#include "frametable.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

#include <eod/io/outputdataprinter.h>

namespace eodpy {

namespace {

// Whether the column name belongs to the record: its record path (the name without its
// last "."-part) equals the record or ends in "." + record.
bool belongsTo(const std::string& column, const std::string& record) {
    const std::string::size_type dot = column.rfind('.');
    if (dot == std::string::npos) return false;
    const std::string path = column.substr(0, dot);
    if (path == record) return true;
    return path.size() > record.size() &&
           path.compare(path.size() - record.size(), record.size(), record) == 0 &&
           path[path.size() - record.size() - 1] == '.';
}

// A cell as a number: empty is NaN; false when it is other text.
bool parseNumber(const char* cell, double& value) {
    if (*cell == '\0') {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    char* end = nullptr;
    value = std::strtod(cell, &end);
    return end != cell && *end == '\0';
}

template <class Each>
void forEachFrame(const TableRequest& request, Each each) {
    FrameReader reader(request.path, request.format);
    while (const auto frame = reader.next()) {
        if (frame->frameNum() >= request.first && frame->frameNum() <= request.last) each(*frame);
    }
}

// One pass over the values. Returns the columns that turned out to hold text though they
// were not marked so (their cells were not kept).
std::vector<std::size_t> fillValues(const TableRequest& request, tq::eod::io::OutputDataPrinter& printer,
                                    const std::vector<std::size_t>& kept, FrameTable& table) {
    std::vector<std::size_t> found_text;
    std::vector<bool> reported(kept.size(), false);
    std::ostringstream os;
    std::string line;
    std::vector<const char*> cells;
    forEachFrame(request, [&](const tq::eod::EngineOutputData& frame) {
        os.str(std::string());
        printer.printData(os, frame);
        line = os.str();
        if (!line.empty() && line.back() == '\n') line.pop_back();
        cells.clear();
        cells.push_back(line.c_str());
        for (char& c : line) {
            if (c == '\t') {
                c = '\0';
                cells.push_back(&c + 1);
            }
        }
        if (!request.record.empty()) {
            bool any = false;
            for (std::size_t k : kept) any = any || *cells[k] != '\0';
            if (!any) return;
        }
        table.frame_nums.push_back(frame.frameNum());
        for (std::size_t i = 0; i < kept.size(); ++i) {
            TableColumn& column = table.columns[i];
            const char* cell = cells[kept[i]];
            if (column.is_text) {
                column.texts.emplace_back(cell);
                continue;
            }
            double value = 0;
            if (!parseNumber(cell, value) && !reported[i]) {
                reported[i] = true;
                found_text.push_back(i);
            }
            column.numbers.push_back(value);
        }
    });
    return found_text;
}

}  // namespace

FrameTable readFrameTable(const TableRequest& request) {
    tq::eod::io::OutputDataPrinter printer;
    forEachFrame(request, [&](const tq::eod::EngineOutputData& frame) { printer.addColumnsOf(frame); });
    std::ostringstream header;
    printer.printHeader(header);

    const std::vector<std::string> names = printer.columnNames();
    std::vector<std::size_t> kept;  // indexes into names, FRAME_NUM (0) left out
    for (std::size_t i = 1; i < names.size(); ++i) {
        if (request.record.empty() || belongsTo(names[i], request.record)) kept.push_back(i);
    }
    FrameTable table;
    table.columns.resize(kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) table.columns[i].name = names[kept[i]];

    const std::vector<std::size_t> text = fillValues(request, printer, kept, table);
    if (!text.empty()) {
        FrameTable again;
        again.columns.resize(kept.size());
        for (std::size_t i = 0; i < kept.size(); ++i) again.columns[i].name = names[kept[i]];
        for (std::size_t i : text) again.columns[i].is_text = true;
        fillValues(request, printer, kept, again);
        for (std::size_t i : text) again.columns[i].numbers.clear();
        return again;
    }
    return table;
}

}  // namespace eodpy
