#include "recordscan.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <typeinfo>

#include <boost/core/demangle.hpp>
#include <boost/pointer_cast.hpp>

#include <eod/engineoutputdata.h>
#include <eod/serializablefactory.h>

#include "toolerror.h"

namespace eodtool {

using tq::eod::EngineOutputData;
using tq::eod::Serializable;
using tq::eod::SerializableFactory;

std::string objectName(int object_id) {
    const boost::shared_ptr<Serializable> sample =
        SerializableFactory::newObject(static_cast<char>(object_id));
    if (!sample) return "unknown";
    const Serializable& object = *sample;
    std::string name = boost::core::demangle(typeid(object).name());
    const std::string::size_type colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

namespace {

const std::size_t kChunkSize = 1 << 20;

// The bytes of a stream through a window that moves forward: records are read from memory,
// and a record that is skipped costs a seek only when it reaches beyond the window.
class Window {
public:
    Window(std::istream& in, std::uint64_t size) : _in(in), _size(size) {}

    // Makes the bytes [offset, offset + n) readable at bytes()[index(offset)]; false when the
    // stream ends first.
    bool ensure(std::uint64_t offset, std::size_t n) {
        if (offset < _start || offset > end()) {
            _in.clear();
            _in.seekg(static_cast<std::streamoff>(offset));
            _bytes.clear();
            _start = offset;
        } else if (offset - _start >= kChunkSize) {
            // Bytes before the record are done with; dropped once per chunk, not per record.
            _bytes.erase(_bytes.begin(), _bytes.begin() + static_cast<std::ptrdiff_t>(offset - _start));
            _start = offset;
        }
        while (end() < offset + n) {
            // A chunk at a time, but no room for bytes past the end of the stream.
            const std::size_t want = static_cast<std::size_t>(std::max<std::uint64_t>(
                offset + n - end(), std::min<std::uint64_t>(kChunkSize, _size > end() ? _size - end() : 0)));
            const std::size_t old_size = _bytes.size();
            _bytes.resize(old_size + want);
            _in.read(reinterpret_cast<char*>(_bytes.data() + old_size), static_cast<std::streamsize>(want));
            const std::size_t got = static_cast<std::size_t>(std::max<std::streamsize>(0, _in.gcount()));
            _bytes.resize(old_size + got);
            if (got == 0) return false;
        }
        return true;
    }

    int index(std::uint64_t offset) const { return static_cast<int>(offset - _start); }
    const std::vector<unsigned char>& bytes() const { return _bytes; }

private:
    std::uint64_t end() const { return _start + _bytes.size(); }

    std::istream& _in;
    std::uint64_t _size;
    std::vector<unsigned char> _bytes;
    std::uint64_t _start = 0;
};

// Whether an id has a registered class, looked up once per id.
class Registered {
public:
    bool operator()(int id) {
        const std::size_t i = static_cast<unsigned char>(id);
        if (!_known[i]) {
            _known[i] = true;
            _registered[i] = SerializableFactory::newObject(static_cast<char>(id)) != nullptr;
        }
        return _registered[i];
    }

private:
    std::array<bool, 256> _known{};
    std::array<bool, 256> _registered{};
};

void countFrame(FileScan& scan, const EngineOutputData& frame, std::uint64_t offset,
                unsigned int status) {
    scan.ledger.addFrame(frame.frameNum(), offset);
    if (status & Serializable::STATUS_UNKNOWN_OBJECT_ID) {
        scan.ledger.addFrameWithUnknownSubRecords(frame.frameNum());
    }
    for (const auto& sub : frame.subObjects()) {
        IdStats& stats = scan.by_id[sub->objectID()];
        ++stats.count;
        if (sub->serializeEnabled()) stats.bytes += sub->numTotalBytes();
    }
}

}  // namespace

FileScan scanRecordStream(std::istream& in, std::uint64_t size, const std::string& path) {
    FileScan scan;
    scan.path = path;
    scan.size = size;
    Window window(in, size);
    Registered registered;
    std::uint64_t offset = 0;
    while (offset < size) {
        // The header, read here so that no size it announces is trusted before the bytes
        // are known to be in the file.
        std::uint64_t header_bytes = Serializable::minHeaderBytes();
        std::uint64_t end = 0;
        if (window.ensure(offset, header_bytes)) {
            const unsigned char* h = window.bytes().data() + window.index(offset);
            std::uint64_t data_size = (std::uint64_t(h[1]) << 8) | h[2];
            if (data_size == Serializable::extendedHeaderSizeMagicCookie()) {
                header_bytes += 4;
                if (window.ensure(offset, header_bytes)) {
                    h = window.bytes().data() + window.index(offset);
                    data_size = (std::uint64_t(h[3]) << 24) | (std::uint64_t(h[4]) << 16) |
                                (std::uint64_t(h[5]) << 8) | h[6];
                    end = offset + header_bytes + data_size;
                }
            } else {
                end = offset + header_bytes + data_size;
            }
        }
        if (end == 0 || end > size) {
            scan.ledger.setTruncatedTail(offset, size);
            break;
        }
        const int id = static_cast<signed char>(window.bytes()[static_cast<std::size_t>(window.index(offset))]);
        ++scan.records;
        if (!registered(id)) {
            scan.ledger.addUnknownRecord(id, offset);
            offset = end;
            continue;
        }
        // A record this large is not decoded: its size is as likely damage as data, and
        // decoding would hold all of it in memory.
        if (end - offset > kMaxScannedRecordSize || !window.ensure(offset, static_cast<std::size_t>(end - offset))) {
            scan.ledger.addCorruptRecord(offset);
            offset = end;
            continue;
        }
        int read_pos = window.index(offset);
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(window.bytes(), read_pos, status);
        if (!record || (status & (Serializable::STATUS_UNDECODABLE | Serializable::STATUS_NOT_ENOUGH_DATA))) {
            scan.ledger.addCorruptRecord(offset);
            offset = end;
            continue;
        }
        ++scan.known_records;
        const auto frame = boost::dynamic_pointer_cast<EngineOutputData>(record);
        if (frame) {
            countFrame(scan, *frame, offset, status);
        } else {
            IdStats& stats = scan.by_id[record->objectID()];
            ++stats.count;
            stats.bytes += record->numTotalBytes();
        }
        offset = end;
    }
    return scan;
}

FileScan scanRecordFile(const std::string& path) {
    std::error_code ec;
    const std::filesystem::file_status status = std::filesystem::status(path, ec);
    if (ec) throw ToolError(path + ": " + ec.message());
    // A FIFO or a device never ends or never holds still: reading one would hang.
    if (!std::filesystem::is_regular_file(status)) throw ToolError(path + ": not a regular file");
    std::ifstream in(path, std::ios_base::in | std::ios_base::binary);
    if (!in) throw ToolError(path + ": cannot open file");
    const std::uint64_t size = std::filesystem::file_size(path, ec);
    if (ec) throw ToolError(path + ": " + ec.message());
    return scanRecordStream(in, size, path);
}

}  // namespace eodtool
