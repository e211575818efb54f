#include <eod/engineoutputbase.h>
#include <eod/io/engineoutputdatafilereader.h>

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <limits>
#include <system_error>

#include <boost/make_shared.hpp>

#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace fs = std::filesystem;

namespace {

bool endsWith(const std::wstring& s, const std::wstring& end) {
    return s.size() >= end.size() && s.compare(s.size() - end.size(), end.size(), end) == 0;
}

// An empty directory stands for the current one.
fs::path directoryPath(const std::string& directory) {
    return fs::u8path(directory.empty() ? std::string(".") : directory);
}

// These texts name the Windows search calls the log format started out with; callers match
// them as they are, the two blanks after the first dash included.
const char FIND_FIRST_FAILED[] =
    "EngineOutputDataFileReader::logFilesInDir -  FindFirstFile failed with error code ";
const char FIND_NEXT_FAILED[] =
    "EngineOutputDataFileReader::logFilesInDir - FindNextFile failed with error code ";

[[noreturn]] void throwListingError(const char* text, const std::error_code& ec) {
    throw EngineOutputDataFileError(text + std::to_string(ec.value()));
}

[[noreturn]] void throwCorruptLog(const std::wstring& path) {
    throw EngineOutputDataFileError(
        "EngineOutputDataFileReader::readData() - corrupt or invalid logfile",
        detail::narrowPath(path));
}

}  // namespace

EngineOutputDataFileReader::EngineOutputDataStream::EngineOutputDataStream(const std::wstring& path)
    : _path(path) {
    if (_reader.open(path)) return;
    const std::string narrow = detail::narrowPath(path);
    std::error_code ec;
    const bool exists = fs::exists(fs::u8path(narrow), ec);
    throw EngineOutputDataFileError("EngineOutputDataFileReader::openFiles - could not open file " +
                                        narrow + (exists ? ": not a regular file" : ""),
                                    narrow);
}

const boost::shared_ptr<EngineOutputData>&
EngineOutputDataFileReader::EngineOutputDataStream::current() {
    if (!_current && !_reader.atEnd()) {
        // The status only repeats what a null or foreign record says already.
        unsigned int status = 0;
        _current = boost::dynamic_pointer_cast<EngineOutputData>(_reader.read(status));
        if (!_current) {
            // Nothing of this file follows a bad record at its end, so the error may wait
            // until the other files have given their frames.
            if (!_torn_tail_last || !_reader.atEnd()) throwCorruptLog(_path);
            _torn_tail = true;
        }
    }
    return _current;
}

void EngineOutputDataFileReader::EngineOutputDataStream::throwTornTail() {
    if (!_torn_tail) return;
    _torn_tail = false;
    throwCorruptLog(_path);
}

EngineOutputDataFileReader::EngineOutputDataFileReader() = default;

EngineOutputDataFileReader::~EngineOutputDataFileReader() = default;

void EngineOutputDataFileReader::openFiles(const std::wstring& directory) {
    EOD_REQUIRE(!areFilesOpen(), "files already open");
    _skipped_files.clear();
    const std::vector<std::wstring> files = logFilesInDir(directory, _skipped_files);
    if (files.empty()) {
        throw EngineOutputDataFileError(
            "EngineOutputDataFileReader::openFiles - no logfiles found in " +
            detail::narrowPath(directory));
    }
    openStreams(files);
}

void EngineOutputDataFileReader::openFiles(const std::string& directory) {
    openFiles(detail::widePath(directory));
}

void EngineOutputDataFileReader::openFiles(const std::vector<char>& mergeIDs,
                                           const std::wstring& directory) {
    openFiles(directory);
    _merge_ids = mergeIDs;
}

void EngineOutputDataFileReader::openFiles(const std::vector<char>& mergeIDs,
                                           const std::string& directory) {
    openFiles(mergeIDs, detail::widePath(directory));
}

void EngineOutputDataFileReader::openFile(const std::wstring& path) {
    EOD_REQUIRE(!areFilesOpen(), "files already open");
    openStreams({path});
}

void EngineOutputDataFileReader::openFile(const std::string& path) {
    openFile(detail::widePath(path));
}

void EngineOutputDataFileReader::openStreams(const std::vector<std::wstring>& paths) {
    // Merge ids belong to one opening: a plain open after a filtered one merges every id.
    _merge_ids.clear();
    for (const std::wstring& path : paths) {
        _streams.push_back(std::make_unique<EngineOutputDataStream>(path));
        _streams.back()->setTornTailLast(_torn_tails_last);
        _streams.back()->setMaxRecordSize(_max_record_size);
    }
}

void EngineOutputDataFileReader::setTornTailsLast(bool last) {
    _torn_tails_last = last;
    for (const auto& stream : _streams) stream->setTornTailLast(last);
}

void EngineOutputDataFileReader::setMaxRecordSize(unsigned int max_record_size) {
    // FileReader's usage error, before anything changes.
    FileReader().setMaxRecordSize(max_record_size);
    _max_record_size = max_record_size;
    for (const auto& stream : _streams) stream->setMaxRecordSize(max_record_size);
}

void EngineOutputDataFileReader::closeFiles() {
    _streams.clear();
    _merge_ids.clear();
}

std::vector<std::wstring> EngineOutputDataFileReader::logFilesInDir(
    const std::wstring& directory, std::vector<std::wstring>& skipped) {
    std::vector<std::wstring> files = listLogFiles(directory, skipped);
    if (files.empty()) {
        std::wstring search = directory;
        if (!search.empty()) search += L'/';
        throw EngineOutputDataFileError(
            "EngineOutputDataFileReader::logFilesInDir - No logfiles found in " + detail::narrowPath(search));
    }
    return files;
}

std::vector<std::wstring> EngineOutputDataFileReader::listLogFiles(
    const std::wstring& directory, std::vector<std::wstring>& skipped) {
    const std::string narrow = detail::narrowPath(directory);
    // Only a directory whose attributes cannot be told at all is rejected at this point; a
    // missing path or a plain file gets through and fails when it is listed.
    std::error_code ec;
    if (fs::status(directoryPath(narrow), ec).type() == fs::file_type::none) {
        throw EngineOutputDataFileError(
            "EngineOutputDataFileReader::logFilesInDir - not a valid directory: " + narrow);
    }
    std::wstring search = directory;
    if (!search.empty()) search += L'/';
    const std::string narrow_search = detail::narrowPath(search);

    fs::directory_iterator it(directoryPath(narrow_search), ec);
    if (ec) throwListingError(FIND_FIRST_FAILED, ec);
    std::vector<std::wstring> files;
    for (const fs::directory_iterator end; it != end; it.increment(ec)) {
        const std::wstring name = detail::widePath(it->path().filename().u8string());
        if (!endsWith(name, EngineOutputData::LOGFILE_EXTENSION())) continue;
        // Followed through links; a loop or a dangling link reports an error here.
        std::error_code type_ec;
        const bool regular = it->is_regular_file(type_ec);
        (regular && !type_ec ? files : skipped).push_back(search + name);
    }
    if (ec) throwListingError(FIND_NEXT_FAILED, ec);
    std::sort(files.begin(), files.end());
    std::sort(skipped.begin(), skipped.end());
    return files;
}

bool EngineOutputDataFileReader::isMergable(char id) const {
    return _merge_ids.empty() ||
           std::find(_merge_ids.begin(), _merge_ids.end(), id) != _merge_ids.end();
}

bool EngineOutputDataFileReader::hasMergableSubObject(const EngineOutputData& data) const {
    if (data.numSubObjects() == 0) return false;
    if (_merge_ids.empty()) return true;
    for (char id : _merge_ids) {
        if (data.hasSubObjectID(id)) return true;
    }
    return false;
}

void EngineOutputDataFileReader::skipNonMergable(EngineOutputDataStream& stream) {
    while (stream.current() && !hasMergableSubObject(*stream.current())) stream.advance();
}

unsigned int EngineOutputDataFileReader::nextMergableFrameNum() {
    unsigned int frame = std::numeric_limits<unsigned int>::max();
    for (const auto& stream : _streams) {
        skipNonMergable(*stream);
        if (stream->current()) frame = std::min(frame, stream->current()->frameNum());
    }
    return frame;
}

bool EngineOutputDataFileReader::endOfData() const {
    for (const auto& stream : _streams) {
        // current() first: reading may be what finds the torn tail.
        if (stream->current() || stream->hasTornTail()) return false;
    }
    return true;
}

bool EngineOutputDataFileReader::hasRecords() const {
    for (const auto& stream : _streams) {
        if (stream->current()) return true;
    }
    return false;
}

boost::shared_ptr<EngineOutputData> EngineOutputDataFileReader::readData() {
    EOD_REQUIRE(areFilesOpen(), "files are not open");
    const unsigned int frame = nextMergableFrameNum();
    // Passing over records without mergeable sub-objects may have used up every file; the
    // frame number alone cannot tell, since the largest one is a valid number too.
    if (!hasRecords()) {
        for (const auto& stream : _streams) stream->throwTornTail();
        return boost::shared_ptr<EngineOutputData>();
    }
    boost::shared_ptr<EngineOutputData> result = boost::make_shared<EngineOutputData>();
    result->setFrameNum(frame);
    for (const auto& stream : _streams) {
        const boost::shared_ptr<EngineOutputData>& next = stream->current();
        if (next && next->frameNum() == frame) {
            mergeSubObjects(*next, *result);
            stream->advance();  // `next` is empty from here on
        }
    }
    return result;
}

void EngineOutputDataFileReader::mergeSubObjects(EngineOutputData& src, EngineOutputData& dst) {
    assert(src.frameNum() == dst.frameNum() && "src.frameNum() == dst.frameNum()");
    for (const boost::shared_ptr<Serializable>& sub : src.subObjects()) {
        if (!isMergable(sub->objectID())) continue;
        if (!dynamic_cast<const EngineOutputBase*>(sub.get())) {
            throw EngineOutputDataFileError(
                "EngineOutputDataFileReader::readData() - invalid sub-object");
        }
        src.removeSubObject(*sub);
        // What addSubObject does once its EngineOutputBase test, just made, has passed.
        dst.insertSubObject(sub);
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
