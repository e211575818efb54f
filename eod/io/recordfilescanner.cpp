#include <eod/io/recordfilescanner.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <vector>

#include <eod/io/engineoutputdatafileerror.h>
#include <eod/recordsize.h>
#include <eod/serializable.h>
#include <eod/serializablefactory.h>

namespace tq {
namespace eod {
namespace io {

namespace {

const std::size_t CHUNK_SIZE = 1 << 20;

// The bytes of a stream through a window that moves forward: records are read from memory,
// and a record that is skipped costs a seek only when it reaches beyond the window.
class Window {
public:
    Window(std::istream& in, std::uint64_t size) : _in(in), _size(size) {}

    // Makes the bytes [offset, offset + n) readable at data(offset), as far as the stream
    // holds them; returns how many of the n are there.
    std::size_t ensure(std::uint64_t offset, std::size_t n) {
        if (offset < _start || offset > end()) {
            _in.clear();
            _in.seekg(static_cast<std::streamoff>(offset));
            _bytes.clear();
            _start = offset;
        } else if (offset - _start >= CHUNK_SIZE) {
            // Bytes before the record are done with; dropped once per chunk, not per record.
            _bytes.erase(_bytes.begin(), _bytes.begin() + static_cast<std::ptrdiff_t>(offset - _start));
            _start = offset;
        }
        while (end() < offset + n && end() < _size) {
            // A chunk at a time, but no room for bytes past the end of the stream.
            const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(
                std::max<std::uint64_t>(offset + n - end(), CHUNK_SIZE), _size - end()));
            const std::size_t old_size = _bytes.size();
            _bytes.resize(old_size + want);
            _in.read(reinterpret_cast<char*>(_bytes.data() + old_size), static_cast<std::streamsize>(want));
            const std::size_t got = static_cast<std::size_t>(std::max<std::streamsize>(0, _in.gcount()));
            _bytes.resize(old_size + got);
            if (got == 0) break;
        }
        return static_cast<std::size_t>(std::min<std::uint64_t>(n, end() - std::min(end(), offset)));
    }

    const unsigned char* data(std::uint64_t offset) const {
        return _bytes.data() + (offset - _start);
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

}  // namespace

void scanRecords(std::istream& in, std::uint64_t size, RecordScanReporter& reporter,
                 std::uint64_t max_record_size) {
    // Positions in the window are ints: no record beyond a gigabyte is decoded.
    max_record_size = std::min<std::uint64_t>(max_record_size, std::uint64_t(1) << 30);
    Window window(in, size);
    Registered registered;
    std::uint64_t offset = 0;
    const std::size_t longest_header = 7;
    while (offset < size) {
        // No size a header announces is trusted before the bytes are known to be in the file.
        const std::size_t got = window.ensure(offset, longest_header);
        const RecordSize record_size = recordSizeFromPrefix(window.data(offset), got);
        if (!record_size.known || record_size.total_bytes > size - offset) {
            reporter.truncatedTail(offset, size);
            return;
        }
        const std::uint64_t bytes = record_size.total_bytes;
        const int id = static_cast<signed char>(*window.data(offset));
        if (!registered(id)) {
            reporter.unknownRecord(id, offset, bytes);
            offset += bytes;
            continue;
        }
        // A record this large is not decoded: its size is as likely damage as data, and
        // decoding would hold all of it in memory.
        if (bytes > max_record_size || window.ensure(offset, static_cast<std::size_t>(bytes)) < bytes) {
            reporter.corruptRecord(offset, bytes);
            offset += bytes;
            continue;
        }
        int read_pos = window.index(offset);
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObjectWithStatus(window.bytes(), read_pos, status);
        if (!record || (status & (Serializable::STATUS_UNDECODABLE | Serializable::STATUS_NOT_ENOUGH_DATA))) {
            reporter.corruptRecord(offset, bytes);
        } else {
            reporter.record(*record, offset, bytes, status);
        }
        offset += bytes;
    }
}

void scanRecordFile(const std::string& path, RecordScanReporter& reporter,
                    std::uint64_t max_record_size) {
    namespace fs = std::filesystem;
    const fs::path file = fs::u8path(path);
    std::error_code ec;
    const fs::file_status status = fs::status(file, ec);
    if (ec) throw EngineOutputDataFileError(path + ": " + ec.message());
    // A FIFO or a device never ends or never holds still: reading one would hang.
    if (!fs::is_regular_file(status)) throw EngineOutputDataFileError(path + ": not a regular file");
    std::ifstream in(file, std::ios_base::in | std::ios_base::binary);
    if (!in) throw EngineOutputDataFileError(path + ": cannot open file");
    const std::uint64_t size = fs::file_size(file, ec);
    if (ec) throw EngineOutputDataFileError(path + ": " + ec.message());
    scanRecords(in, size, reporter, max_record_size);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
