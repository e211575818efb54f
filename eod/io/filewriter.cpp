#include <eod/io/filewriter.h>

#include <eod/serializableerror.h>

#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

FileWriter::FileWriter() : _buffer(new char[BUFFER_SIZE]) {}

FileWriter::FileWriter(const std::wstring& path) : FileWriter() {
    if (!open(path)) throwFileOpenError(path);
}

FileWriter::FileWriter(const std::string& path) : FileWriter() {
    if (!open(path)) throwFileOpenError(path);
}

FileWriter::~FileWriter() { close(); }

bool FileWriter::open(const std::wstring& path) {
    close();
    _file_path = path;
    // The buffer must be installed while the stream is closed to take effect.
    _stream.rdbuf()->pubsetbuf(_buffer.get(), BUFFER_SIZE);
    _stream.open(detail::narrowPath(path),
                 std::ios_base::out | std::ios_base::binary | std::ios_base::trunc);
    return !_stream.fail();
}

bool FileWriter::open(const std::string& path) { return open(detail::widePath(path)); }

void FileWriter::close() {
    if (_stream.is_open()) _stream.close();
    _stream.clear();
    _file_path.clear();
}

bool FileWriter::isOpen() const { return _stream.is_open(); }

bool FileWriter::writeNoThrow(const Serializable& record) {
    EOD_REQUIRE(isOpen(), "files are not open");
    if (!record.serializeEnabled()) return true;
    record.writeToBinaryStream(_stream);
    if (_stream.fail()) {
        close();
        return false;
    }
    return true;
}

void FileWriter::write(const Serializable& record) {
    if (!writeNoThrow(record)) throwFileWriteError(_file_path);
}

unsigned int FileWriter::size() const {
    const std::streamoff pos = _stream.tellp();
    return pos < 0 ? 0 : static_cast<unsigned int>(pos);
}

void throwFileOpenError(const std::string& path) {
    throw SerializableError("Failed to open file '" + path + "'.");
}

void throwFileOpenError(const std::wstring& path) { throwFileOpenError(detail::narrowPath(path)); }

void throwFileWriteError(const std::string& path) {
    throw SerializableError("Failed to write to file '" + path + "'.");
}

void throwFileWriteError(const std::wstring& path) {
    throwFileWriteError(detail::narrowPath(path));
}

}  // namespace io
}  // namespace eod
}  // namespace tq
