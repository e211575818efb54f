#include <eod/io/filereader.h>

#include <eod/serializableerror.h>

#include <filesystem>
#include <system_error>

#include "eod/io/detail/pathconversion.h"
#include "eod/detail/streamrecord.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

FileReader::FileReader(const std::wstring& path) : FileReader(detail::narrowPath(path)) {}

FileReader::FileReader(const std::string& path) {
    if (open(path)) return;
    if (!isRegularFile(path) && std::filesystem::exists(std::filesystem::u8path(path))) {
        throw SerializableError("Failed to open file '" + path + "': not a regular file.");
    }
    throwFileOpenError(path);
}

bool FileReader::open(const std::wstring& path) { return open(detail::narrowPath(path)); }

bool FileReader::open(const std::string& path) {
    close();
    // The standard stream clears its flags when it opens a file; what the earlier use left
    // is put back, so that a reader reports its state across close() and open().
    const std::ios_base::iostate left = _stream.rdstate();
    // Tested before opening: opening a FIFO for reading blocks until a writer comes.
    if (!isRegularFile(path)) {
        _stream.setstate(std::ios_base::failbit);
        return false;
    }
    if (!_buffer) _buffer.reset(new char[BUFFER_SIZE]);
    // The buffer must be installed while the stream is closed to take effect.
    _stream.rdbuf()->pubsetbuf(_buffer.get(), BUFFER_SIZE);
    _stream.open(path, std::ios_base::in | std::ios_base::binary);
    _stream.setstate(left);
    return !_stream.fail();
}

void FileReader::close() {
    if (_stream.is_open()) _stream.close();
}

void FileReader::clearState() { _stream.clear(); }

bool FileReader::isRegularFile(const std::string& path) {
    std::error_code ec;
    return std::filesystem::is_regular_file(std::filesystem::u8path(path), ec);
}

bool FileReader::isOpen() const { return _stream.is_open(); }

bool FileReader::atEnd() const {
    return _stream.peek() == std::ifstream::traits_type::eof();
}

boost::shared_ptr<Serializable> FileReader::read(unsigned int& status) {
    EOD_REQUIRE(isOpen(), "files are not open");
    EOD_REQUIRE(!atEnd(), "Cannot reading when atEnd().");
    status = 0;
    eod::detail::RefusedRecord refused;
    boost::shared_ptr<Serializable> record = eod::detail::newObjectWithStatus(
        _stream, status, _record_bytes, _max_record_size, refused);
    if (refused.header_bytes != 0) {
        const unsigned long long offset = position() - refused.header_bytes;
        // Past the data with a seek, not a read: the size may be forged and the file sparse.
        _stream.seekg(static_cast<std::streamoff>(refused.data_bytes), std::ios_base::cur);
        throw SerializableError("FileReader::read() - record of " +
                                std::to_string(refused.header_bytes + refused.data_bytes) +
                                " bytes at offset " + std::to_string(offset) +
                                " exceeds the maximum record size of " +
                                std::to_string(_max_record_size) + " bytes");
    }
    return record;
}

void FileReader::setMaxRecordSize(unsigned int max_record_size) {
    EOD_REQUIRE(max_record_size >= Serializable::minHeaderBytes(),
                "max_record_size out of range");
    _max_record_size = max_record_size;
}

unsigned int FileReader::position() const {
    // Asked of the file buffer, not through tellg(): once atEnd() has peeked at the end of
    // the file the stream's eofbit is set and tellg() reports -1 (and sets failbit).
    const std::streamoff pos =
        _stream.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    return pos < 0 ? 0 : static_cast<unsigned int>(pos);
}

void FileReader::throwFileOpenError(const std::string& path) { io::throwFileOpenError(path); }

}  // namespace io
}  // namespace eod
}  // namespace tq
