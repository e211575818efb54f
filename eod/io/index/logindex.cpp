#include <eod/io/index/logindex.h>

#include <algorithm>
#include <fstream>

#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/index/logscan.h>

#include "eod/io/index/detail/indexformat.h"

namespace tq {
namespace eod {
namespace io {

struct LogIndex::File {
    std::ifstream log;
    std::ifstream index;
};

namespace {

std::uint64_t streamSize(std::ifstream& in) {
    in.clear();
    in.seekg(0, std::ios_base::end);
    const std::streamoff end = in.tellg();
    in.clear();
    return end > 0 ? static_cast<std::uint64_t>(end) : 0;
}

LogIndexEntry decodeEntry(const unsigned char* p) {
    return {detail::loadU32(p), detail::loadU64(p + 4)};
}

}  // namespace

LogIndex LogIndex::open(const std::string& log_path) { return fromFile(log_path, false); }

LogIndex LogIndex::openVerified(const std::string& log_path) { return fromFile(log_path, true); }

LogIndex LogIndex::scan(const std::string& log_path) {
    LogIndex index(log_path);
    index.scanFrom(0);
    return index;
}

LogIndex::LogIndex(const std::string& log_path) : _log_path(log_path), _file(std::make_shared<File>()) {
    _file->log.open(log_path, std::ios_base::in | std::ios_base::binary);
    if (!_file->log) throw EngineOutputDataFileError("LogScanner - could not open file " + log_path);
    _log_size = streamSize(_file->log);
}

LogIndex LogIndex::fromFile(const std::string& log_path, bool verify_entries) {
    LogIndex index(log_path);
    if (!index.believeIndexFile() || (verify_entries && !index.verifyFileEntries())) {
        index._file_count = 0;
        index._monotonic = true;
        index._origin = Origin::SCAN;
        index.scanFrom(0);
        return index;
    }
    index._origin = Origin::INDEX_FILE;
    if (index._file_end < index._log_size) {
        // A writer killed after its last index flush: the log goes on where the index stops.
        index._origin = Origin::INDEX_FILE_AND_SCAN;
        index.scanFrom(index._file_end);
    }
    return index;
}

bool LogIndex::believeIndexFile() {
    std::ifstream& in = _file->index;
    in.open(logIndexPath(_log_path), std::ios_base::in | std::ios_base::binary);
    if (!in) return false;
    const std::uint64_t index_size = streamSize(in);
    unsigned char bytes[detail::INDEX_HEADER_SIZE];
    in.seekg(0);
    if (!in.read(reinterpret_cast<char*>(bytes), sizeof bytes)) return false;
    detail::IndexHeader header;
    if (!detail::decodeIndexHeader(bytes, header)) return false;
    // The count is compared with what the file holds before anything is read by it.
    if (header.count > (index_size - detail::INDEX_HEADER_SIZE) / detail::INDEX_ENTRY_SIZE) {
        return false;
    }
    if (header.covered_size > _log_size || (header.count == 0) != (header.covered_size == 0)) {
        return false;
    }
    std::uint32_t edge = 0;
    if (!detail::edgeChecksum(_file->log, header.covered_size, edge) || edge != header.edge_crc) {
        return false;
    }
    _file_count = header.count;
    _file_end = header.covered_size;
    _entries_crc = header.entries_crc;
    _monotonic = (header.flags & detail::INDEX_FLAG_MONOTONIC) != 0;
    if (_file_count == 0) return true;
    try {
        return entry(0).offset == 0 && entry(size() - 1).offset < _file_end;
    } catch (const EngineOutputDataFileError&) {
        return false;
    }
}

bool LogIndex::verifyFileEntries() {
    const std::size_t count = static_cast<std::size_t>(_file_count);
    std::vector<LogIndexEntry> entries;
    entries.reserve(count);
    std::ifstream& in = _file->index;
    in.clear();
    in.seekg(static_cast<std::streamoff>(detail::INDEX_HEADER_SIZE));
    // Read in slices, so that checking a long index holds its entries and no copy of its bytes.
    const std::size_t slice = 4096;
    unsigned char bytes[slice * detail::INDEX_ENTRY_SIZE];
    std::uint32_t crc = 0;
    bool monotonic = true;
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(slice, count - done);
        if (!in.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(n * detail::INDEX_ENTRY_SIZE))) {
            return false;
        }
        crc = detail::crc32Of(crc, bytes, n * detail::INDEX_ENTRY_SIZE);
        for (std::size_t k = 0; k < n; ++k, ++done) {
            const LogIndexEntry e = decodeEntry(bytes + k * detail::INDEX_ENTRY_SIZE);
            if (done == 0 ? e.offset != 0 : e.offset <= entries.back().offset) return false;
            if (done > 0 && e.frame_num < entries.back().frame_num) monotonic = false;
            entries.push_back(e);
        }
    }
    if (crc != _entries_crc || monotonic != _monotonic) return false;
    if (count > 0 && (entries.back().offset >= _file_end || !confirms(count - 1))) return false;
    // Believed whole: from here on the entries are served from memory.
    _memory = std::move(entries);
    _memory_end = _file_end;
    _file_count = 0;
    return true;
}

void LogIndex::scanFrom(std::uint64_t offset) {
    LogScanner scanner(_log_path, offset);
    LogIndexEntry e;
    std::vector<unsigned char> bytes;
    bool has_last = size() > 0;
    unsigned int last = has_last ? entry(size() - 1).frame_num : 0;
    while (scanner.next(e, bytes)) {
        if (has_last && e.frame_num < last) _monotonic = false;
        last = e.frame_num;
        has_last = true;
        _memory.push_back(e);
        _memory_end = e.offset + bytes.size();
    }
}

LogIndexEntry LogIndex::entry(std::size_t i) const {
    if (i >= _file_count) return _memory.at(i - static_cast<std::size_t>(_file_count));
    unsigned char bytes[detail::INDEX_ENTRY_SIZE];
    std::ifstream& in = _file->index;
    in.clear();
    in.seekg(static_cast<std::streamoff>(detail::INDEX_HEADER_SIZE + i * detail::INDEX_ENTRY_SIZE));
    if (!in.read(reinterpret_cast<char*>(bytes), sizeof bytes)) {
        throw EngineOutputDataFileError("LogIndex - could not read the index of " + _log_path);
    }
    return decodeEntry(bytes);
}

std::vector<LogIndexEntry> LogIndex::entries() const {
    std::vector<LogIndexEntry> result;
    result.reserve(size());
    for (std::size_t i = 0; i < size(); ++i) result.push_back(entry(i));
    return result;
}

std::size_t LogIndex::lowerBound(unsigned int frame_num) const {
    std::size_t low = 0, high = size();
    while (low < high) {
        const std::size_t mid = low + (high - low) / 2;
        if (entry(mid).frame_num < frame_num) {
            low = mid + 1;
        } else {
            high = mid;
        }
    }
    return low;
}

bool LogIndex::confirms(std::size_t i) const {
    // Entries found by a scan were read from the log's own bytes.
    if (i >= _file_count) return i < size();
    const LogIndexEntry e = entry(i);
    const std::uint64_t next = i + 1 < _file_count ? entry(i + 1).offset : _file_end;
    detail::RecordHead head;
    return detail::readRecordHead(_file->log, e.offset, head) && head.frame_known &&
           head.frame_num == e.frame_num && head.end == next;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
