#include "eod/io/outputdataprinter.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <nlohmann/json.hpp>

#include <eod/gazeoutputdata.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/serializablecomposite.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include "eod/io/detail/pathconversion.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

// A record's own columns, titles or values, in the column form every record prints: a
// composite's own part only (its sub-records are visited one by one), a leaf record whole.
// `os` is reused from call to call: making a stream costs more than printing a record.
std::string ownText(std::ostringstream& os, const Serializable& record, bool titles) {
    os.str(std::string());
    // Gaze rays without a vergence point print empty cells (NaN to a reader) beside the
    // angle: one such frame must not end a table of hours of frames.
    GazeOutputData::setVergenceErrorsAsEmptyCells(os, true);
    eod::detail::TextLine line(os);
    if (const auto* composite = dynamic_cast<const SerializableComposite*>(&record)) {
        if (titles) {
            composite->printOwnHeader(os);
        } else {
            composite->printOwnData(os);
        }
    } else if (titles) {
        record.printHeader(os);
    } else {
        record.printLine(os);
    }
    return os.str();
}

std::vector<std::string> splitColumns(const std::string& text) {
    std::vector<std::string> columns;
    if (text.empty()) return columns;
    std::string::size_type start = 0;
    for (;;) {
        const std::string::size_type tab = text.find('\t', start);
        columns.push_back(text.substr(start, tab - start));
        if (tab == std::string::npos) return columns;
        start = tab + 1;
    }
}

// The titles of a record, a repeated one numbered from its second occurrence.
std::vector<std::string> uniqueTitles(const std::string& text) {
    std::vector<std::string> titles = splitColumns(text);
    std::map<std::string, int> seen;
    for (std::string& title : titles) {
        const int n = ++seen[title];
        if (n > 1) title += "_" + std::to_string(n);
    }
    return titles;
}

// A value as JSON: a number when the whole text reads as one, else the text.
nlohmann::ordered_json jsonValue(const std::string& text) {
    if (!text.empty()) {
        char* end = nullptr;
        if (text.find_first_of(".eEnN") == std::string::npos) {
            errno = 0;
            const long long integer = std::strtoll(text.c_str(), &end, 10);
            if (*end == '\0' && errno != ERANGE) return integer;
        }
        const double number = std::strtod(text.c_str(), &end);
        if (*end == '\0') return number;
    }
    return text;
}

// Where titles[i] starts a run STEM_X, STEM_Y[, STEM_Z], the run's length; else 0.
std::size_t vectorRun(const std::vector<std::string>& titles, std::size_t i, std::string& stem) {
    const std::string& first = titles[i];
    if (first.size() < 3 || first.compare(first.size() - 2, 2, "_X") != 0) return 0;
    stem = first.substr(0, first.size() - 2);
    std::size_t n = 1;
    for (const char* axis : {"_Y", "_Z"}) {
        if (i + n >= titles.size() || titles[i + n] != stem + axis) break;
        ++n;
    }
    return n >= 2 ? n : 0;
}

}  // namespace

template <class Visit>
void OutputDataPrinter::walk(const Serializable& record, Place& place, const std::string& prefix,
                             const Visit& visit) {
    visit(record, place, prefix);
    const auto* composite = dynamic_cast<const SerializableComposite*>(&record);
    if (!composite) return;
    std::map<int, int> count;
    for (const auto& sub : composite->subObjects()) {
        if (!sub->serializeEnabled()) continue;
        const int id = sub->objectID();
        const int index = count[id]++;
        std::string element = recordName(*sub);
        if (!sub->forbidDuplicateSiblings()) {
            if (std::isdigit(static_cast<unsigned char>(element.back()))) element += '_';
            element += std::to_string(index);
        }
        place.emplace_back(id, index);
        walk(*sub, place, prefix + element + ".", visit);
        place.pop_back();
    }
}

const std::string& OutputDataPrinter::recordName(const Serializable& record) {
    const int id = record.objectID();
    const auto known = _names.find(id);
    if (known != _names.end()) return known->second;
    std::string name;
    try {
        name =
            detail::narrowPath(EngineOutputDataFileWriter::objectIDToFileName(record.objectID()));
    } catch (const EngineOutputDataFileError&) {
        name = boost::core::demangle(typeid(record).name());
        const std::string::size_type colon = name.rfind("::");
        if (colon != std::string::npos) name.erase(0, colon + 2);
        const std::string::size_type suffix = name.find("OutputData");
        if (suffix != std::string::npos) name.erase(suffix, 10);
        // Classes that serve several ids (feature sets, points, rectangles) say which one.
        const boost::shared_ptr<Serializable> sample =
            SerializableFactory::newObject(record.objectID());
        if (!sample || typeid(*sample) != typeid(record)) name += "_" + std::to_string(id);
    }
    return _names.emplace(id, name).first->second;
}

void OutputDataPrinter::requireOpen() const {
    EOD_REQUIRE(!_fixed, "the columns are fixed once the header is printed");
}

OutputDataPrinter::Group& OutputDataPrinter::learn(const Serializable& record, const Place& place,
                                                   const std::string& prefix) {
    Group& group = _groups[place];
    const std::string text = ownText(_text, record, true);
    if (group.prefix.empty()) group.prefix = prefix;
    if (text == group.seen_titles) return group;
    // Records whose titles vary from frame to frame get the union, in order of appearance.
    for (const std::string& title : uniqueTitles(text)) {
        bool present = false;
        for (const std::string& known : group.titles) present = present || known == title;
        if (!present) group.titles.push_back(title);
    }
    group.seen_titles = text;
    group.seen_columns.clear();
    return group;
}

void OutputDataPrinter::addColumnsOf(const EngineOutputData& frame) {
    requireOpen();
    Place place;
    walk(frame, place, "",
         [this](const Serializable& record, const Place& at, const std::string& prefix) {
             learn(record, at, prefix);
         });
}

void OutputDataPrinter::addColumnsOf(char object_id) {
    requireOpen();
    const boost::shared_ptr<Serializable> record = SerializableFactory::newObject(object_id);
    EOD_REQUIRE(record, "object id is not registered");
    EngineOutputData frame;
    frame.addSubObject(record);
    addColumnsOf(frame);
}

std::vector<std::string> OutputDataPrinter::columnNames() const {
    std::vector<std::string> names;
    // The frame's own column comes first: its place is the empty one, which sorts first.
    for (const auto& entry : _groups) {
        for (const std::string& title : entry.second.titles) {
            names.push_back(entry.second.prefix + title);
        }
    }
    return names;
}

void OutputDataPrinter::printHeader(std::ostream& os) {
    if (_groups.empty()) addColumnsOf(EngineOutputData());
    if (!_fixed) {
        for (auto& entry : _groups) {
            entry.second.first_column = _num_columns;
            entry.second.seen_titles.clear();
            _num_columns += entry.second.titles.size();
        }
        _fixed = true;
    }
    {
        eod::detail::TextLine line(os);
        eod::detail::Columns columns(os);
        for (const std::string& name : columnNames()) columns << name;
    }
    os << '\n';
}

void OutputDataPrinter::printData(std::ostream& os, const EngineOutputData& frame) {
    EOD_REQUIRE(_fixed, "printHeader must come first");
    _cells.assign(_num_columns, std::string());
    Place place;
    walk(frame, place, "",
         [this](const Serializable& record, const Place& at, const std::string& prefix) {
             const auto found = _groups.find(at);
             const std::string titles = ownText(_text, record, true);
             EOD_REQUIRE(found != _groups.end() || titles.empty(),
                         "no column for the record " + prefix);
             if (found == _groups.end()) return;
             Group& group = found->second;
             if (titles != group.seen_titles) {
                 group.seen_columns.clear();
                 for (const std::string& title : uniqueTitles(titles)) {
                     std::size_t column = 0;
                     while (column < group.titles.size() && group.titles[column] != title) {
                         ++column;
                     }
                     EOD_REQUIRE(column < group.titles.size(), "no column " + prefix + title);
                     group.seen_columns.push_back(group.first_column + column);
                 }
                 group.seen_titles = titles;
             }
             const std::vector<std::string> values = splitColumns(ownText(_text, record, false));
             if (values.size() != group.seen_columns.size()) {
                 throw SerializableError(
                     "OutputDataPrinter::printData - values do not match the column titles of " +
                     (prefix.empty() ? std::string("the frame") : prefix));
             }
             for (std::size_t i = 0; i < values.size(); ++i) {
                 _cells[group.seen_columns[i]] = values[i];
             }
         });
    {
        eod::detail::TextLine line(os);
        eod::detail::Columns columns(os);
        for (const std::string& cell : _cells) columns << cell;
    }
    os << '\n';
}

void OutputDataPrinter::printJson(std::ostream& os, const EngineOutputData& frame) {
    // The object of each record on the way down from the frame, innermost last.
    nlohmann::ordered_json root = nlohmann::ordered_json::object();
    std::vector<nlohmann::ordered_json*> path;
    Place place;
    walk(frame, place, "", [&](const Serializable& record, const Place& at, const std::string&) {
        path.resize(at.size());
        nlohmann::ordered_json* object = &root;
        if (!at.empty()) {
            nlohmann::ordered_json& parent = *path.back();
            nlohmann::ordered_json& slot = parent[recordName(record)];
            if (record.forbidDuplicateSiblings()) {
                object = &(slot = nlohmann::ordered_json::object());
            } else {
                slot.push_back(nlohmann::ordered_json::object());
                object = &slot.back();
            }
        }
        path.push_back(object);
        const std::vector<std::string> titles = uniqueTitles(ownText(_text, record, true));
        const std::vector<std::string> values = splitColumns(ownText(_text, record, false));
        if (values.size() != titles.size()) {
            throw SerializableError(
                "OutputDataPrinter::printJson - values do not match the column titles of " +
                recordName(record));
        }
        for (std::size_t i = 0; i < titles.size(); ++i) {
            std::string stem;
            const std::size_t run = vectorRun(titles, i, stem);
            if (run == 0) {
                (*object)[titles[i]] = jsonValue(values[i]);
                continue;
            }
            nlohmann::ordered_json& vector = (*object)[stem] = nlohmann::ordered_json::array();
            for (std::size_t k = 0; k < run; ++k) vector.push_back(jsonValue(values[i + k]));
            i += run - 1;
        }
    });
    os << root.dump() << '\n';
}

}  // namespace io
}  // namespace eod
}  // namespace tq
