#include <eod/io/index/logindexwriter.h>

#include <filesystem>

#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/index/logindex.h>

#include "eod/io/index/detail/indexformat.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

LogIndexWriter::~LogIndexWriter() {
    try {
        close();
    } catch (...) {
    }
}

void LogIndexWriter::open(const std::string& log_path) {
    EOD_REQUIRE(!isOpen(), "index already open");
    _log_path = log_path;
    _index_path = logIndexPath(log_path);
    _log_end = 0;
    _pending.clear();
    _pending_first = 0;
    _count = 0;
    _covered = 0;
    _entries_crc = 0;
    _monotonic = true;
    _has_last = false;
    _index.open(_index_path, std::ios_base::in | std::ios_base::out | std::ios_base::binary |
                                 std::ios_base::trunc);
    if (!_index) fail();
    // An index of nothing until the first flush finds records on disk.
    writeHeader(0);
}

void LogIndexWriter::writeHeader(std::uint32_t edge_crc) {
    detail::IndexHeader header;
    header.flags = _monotonic ? detail::INDEX_FLAG_MONOTONIC : 0;
    header.covered_size = _covered;
    header.edge_crc = edge_crc;
    header.count = _count;
    header.entries_crc = _entries_crc;
    unsigned char bytes[detail::INDEX_HEADER_SIZE];
    detail::encodeIndexHeader(header, bytes);
    const std::streampos end = _index.tellp();
    _index.seekp(0);
    _index.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
    if (end > _index.tellp()) _index.seekp(end);
    if (!_index.flush()) fail();
}

void LogIndexWriter::add(unsigned int frame_num, std::uint64_t record_bytes) {
    EOD_REQUIRE(isOpen(), "index not open");
    Pending entry;
    detail::encodeIndexEntry(frame_num, _log_end, entry.bytes);
    entry.frame_num = frame_num;
    _log_end += record_bytes;
    entry.end = _log_end;
    _pending.push_back(entry);
    if (!_index.write(reinterpret_cast<const char*>(entry.bytes), sizeof entry.bytes)) fail();
}

void LogIndexWriter::flush() {
    EOD_REQUIRE(isOpen(), "index not open");
    if (!_index.flush()) fail();
    std::error_code ec;
    const std::uint64_t on_disk = std::filesystem::file_size(_log_path, ec);
    if (ec) return;  // no log yet: the header written before still holds
    std::size_t i = _pending_first;
    while (i < _pending.size() && _pending[i].end <= on_disk) {
        const Pending& p = _pending[i++];
        _entries_crc = detail::crc32Of(_entries_crc, p.bytes, sizeof p.bytes);
        if (_has_last && p.frame_num < _last_frame) _monotonic = false;
        _last_frame = p.frame_num;
        _has_last = true;
        ++_count;
        _covered = p.end;
    }
    _pending_first = i;
    if (_pending_first == _pending.size()) {
        _pending.clear();
        _pending_first = 0;
    }
    std::ifstream log(_log_path, std::ios_base::in | std::ios_base::binary);
    std::uint32_t edge_crc = 0;
    // A log that shrank under the writer: the header written before stays.
    if (!detail::edgeChecksum(log, _covered, edge_crc)) return;
    writeHeader(edge_crc);
}

void LogIndexWriter::close() {
    if (!isOpen()) return;
    flush();
    _index.close();
    if (_index.fail()) fail();
}

void LogIndexWriter::fail() {
    _index.close();
    _index.clear();
    throw EngineOutputDataFileError("LogIndexWriter - could not write file " + _index_path);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
