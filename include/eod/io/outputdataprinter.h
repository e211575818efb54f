#ifndef EOD_IO_OUTPUTDATAPRINTER_H
#define EOD_IO_OUTPUTDATAPRINTER_H

// The text table of a recording: a header line of column names and one value line per
// frame, tab-separated, with one fixed set of columns for the whole table, so that a
// program reading it (a spreadsheet, pandas) finds every value under its own name.
//
// The columns are decided before the first line: addColumnsOf() is called for every frame
// that will be printed (a first pass over the recording) or for record types named up
// front, then printHeader() fixes them and printData() prints frames. A frame that lacks a
// record type leaves its cells empty (pandas reads them as NaN); the other cells stay where
// they are.
//
// Column names: "FRAME_NUM" first, then for every record type, in the order in which a
// frame stores its sub-records (ascending object id, parent before its sub-records), the
// record's own column titles prefixed by the path of record names that leads to it, as in
// "WorldV2.GazeIntersectionV4.EYE_ID". A record's name is its log file name where its id
// has one ("HeadV2", "Timing"), else its class name without "OutputData"
// ("GazeIntersectionV4"), with the id appended when the class is not the one registered for
// that id ("FeatureRect_25"). Records of which a parent may hold several (face sets) carry
// their index (after a "_" when the name ends in a digit, as in "GazeIntersectionV4_1"): a
// frame with two faces prints them side by side in one line, as
// "FaceSet0.Eye.Gaze.GAZE_QUAL_R" and "FaceSet1.Eye.Gaze.GAZE_QUAL_R". A title that a
// record repeats gets "_2", "_3" from its second occurrence ("IRPodState.IR_POS_X_2").
//
// Values are the records' own text output (printOwnData/printLine), unchanged.
//
// The same frames as JSON Lines (printJson), one object per frame, for tools that do not
// read tables: "FRAME_NUM", then each sub-record as a nested object under its record name,
// with its own column titles (made unique as above) as field names. Records of which a
// parent may hold several (face sets, gaze intersections) are arrays of objects in their
// stored order. Titles STEM_X, STEM_Y (and STEM_Z) in a row become one array "STEM".
// Values that read as numbers are numbers (a NaN or infinity is null), the rest strings.
// No columns are involved: printJson needs neither addColumnsOf nor printHeader.

#include <cstddef>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <eod/engineoutputdata.h>

namespace tq {
namespace eod {
namespace io {

class OutputDataPrinter {
public:
    // Adds the columns of every record of the frame, sub-records included. Usage error
    // "the columns are fixed once the header is printed" after printHeader().
    void addColumnsOf(const EngineOutputData& frame);
    // Adds the columns of a default record of the id, as found at the top of a frame. Usage
    // errors: as above, and "object id is not registered" for an id the factory cannot build.
    void addColumnsOf(char object_id);

    // The column names, "FRAME_NUM" first.
    std::vector<std::string> columnNames() const;

    // Writes the header line (with its end of line) and fixes the columns.
    void printHeader(std::ostream& os);
    // Writes one value line (with its end of line). Usage error "printHeader must come
    // first"; usage error naming the column when the frame holds a record the header has no
    // column for. SerializableError "OutputDataPrinter::printData - values do not match the
    // column titles of <name>" when a record prints a different number of values than
    // titles (a value holding a tab).
    void printData(std::ostream& os, const EngineOutputData& frame);

    // Writes the frame as one line of JSON (with its end of line).
    void printJson(std::ostream& os, const EngineOutputData& frame);

private:
    // One record type at one place in the frame: its column titles and where they start.
    struct Group {
        std::string prefix;
        std::vector<std::string> titles;
        std::size_t first_column = 0;
        // The last title line seen and where each of its columns goes, so that a frame
        // with the usual records maps its values without a look-up per title.
        std::string seen_titles;
        std::vector<std::size_t> seen_columns;
    };
    // The place of a record: (object id, index among siblings of that id) from the frame down.
    typedef std::vector<std::pair<int, int>> Place;

    template <class Visit>
    void walk(const Serializable& record, Place& place, const std::string& prefix,
              const Visit& visit);
    const std::string& recordName(const Serializable& record);
    Group& learn(const Serializable& record, const Place& place, const std::string& prefix);
    void requireOpen() const;

    std::map<Place, Group> _groups;
    std::map<int, std::string> _names;
    std::size_t _num_columns = 0;
    bool _fixed = false;
    std::vector<std::string> _cells;
    std::ostringstream _text;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
