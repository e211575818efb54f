#ifndef EOD_IO_FILEREADER_H
#define EOD_IO_FILEREADER_H

// Reads a raw record file: encoded records back to back, no file header, index or trailer.

#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/serializable.h>
#include <eod/io/fileerrors.h>

namespace tq {
namespace eod {
namespace io {

class FileReader {
public:
    // Largest record, header included, that read() decodes unless setMaxRecordSize says
    // otherwise; the TCP client has the same default.
    static constexpr unsigned int DEFAULT_MAX_RECORD_SIZE = 64u << 20;

    FileReader() = default;
    // Open at once; throw SerializableError "Failed to open file '<path>'." on failure, and
    // "Failed to open file '<path>': not a regular file." for a directory, FIFO, device or
    // socket.
    explicit FileReader(const std::wstring& path);
    explicit FileReader(const std::string& path);

    // Closes whatever is open and opens the file for binary reading; never throws. Only
    // regular files (or links to them) are opened: anything else returns false without
    // being opened, so a FIFO or a device cannot block or feed the reader without end.
    // close() leaves the stream's error flags as they are and open() keeps them, so after
    // a use that ran into the end of a file open() reports that state: false when a read
    // failed there, and a reopened reader that only peeked at the end is atEnd() at once.
    // clearState() before open() starts afresh.
    bool open(const std::wstring& path);
    bool open(const std::string& path);
    void close();
    // Clears the error flags left by an earlier use.
    void clearState();
    bool isOpen() const;
    // True exactly when the next byte is the end of the file.
    bool atEnd() const;

    // The next record through SerializableFactory::newObjectWithStatus, returned as the
    // factory returns it: null with status bit 1 for a skipped record of unknown id, null
    // with bit 4 for a file that ends inside a record, null with bit 8 for bytes the record
    // rejected. Usage errors: "files are not open", "Cannot reading when atEnd().".
    // A record of a registered id larger than maxRecordSize() is passed over without
    // reading its bytes and throws SerializableError "FileReader::read() - record of <n>
    // bytes at offset <offset> exceeds the maximum record size of <max> bytes"; the next
    // read starts after it. Memory follows the bytes read, never a size field.
    boost::shared_ptr<Serializable> read(unsigned int& status);

    // Read offset in bytes from the start of the file.
    unsigned int position() const;

    // At least 3 bytes (usage error "max_record_size out of range").
    void setMaxRecordSize(unsigned int max_record_size);
    unsigned int maxRecordSize() const { return _max_record_size; }

    // Whether `path` names a regular file, following symbolic links.
    static bool isRegularFile(const std::string& path);

private:
    [[noreturn]] void throwFileOpenError(const std::string& path);

    // Records are read a block at a time from the file rather than in small pieces.
    static constexpr std::size_t BUFFER_SIZE = 65536;

    // Declared before the stream so that it outlives the stream.
    std::unique_ptr<char[]> _buffer;
    mutable std::ifstream _stream;
    // The bytes of the record being read, kept from one record to the next.
    std::vector<unsigned char> _record_bytes;
    unsigned int _max_record_size = DEFAULT_MAX_RECORD_SIZE;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
