#include <eod/io/filereader.h>

#include <eod/serializableerror.h>

#include "eod/io/pathconversion.h"
#include "eod/streamrecord.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {
namespace io {

FileReader::FileReader(const std::wstring& path) : FileReader(detail::narrowPath(path)) {}

FileReader::FileReader(const std::string& path) {
    if (!open(path)) throwFileOpenError(path);
}

bool FileReader::open(const std::wstring& path) { return open(detail::narrowPath(path)); }

bool FileReader::open(const std::string& path) {
    close();
    if (!_buffer) _buffer.reset(new char[BUFFER_SIZE]);
    // The buffer must be installed while the stream is closed to take effect.
    _stream.rdbuf()->pubsetbuf(_buffer.get(), BUFFER_SIZE);
    _stream.open(path, std::ios_base::in | std::ios_base::binary);
    return !_stream.fail();
}

void FileReader::close() {
    if (_stream.is_open()) _stream.close();
}

bool FileReader::isOpen() const { return _stream.is_open(); }

bool FileReader::atEnd() const {
    return _stream.peek() == std::ifstream::traits_type::eof();
}

boost::shared_ptr<Serializable> FileReader::read(unsigned int& status) {
    EOD_REQUIRE(isOpen(), "files are not open");
    EOD_REQUIRE(!atEnd(), "Cannot reading when atEnd().");
    status = 0;
    return eod::detail::newObjectWithStatus(_stream, status, _record_bytes);
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
