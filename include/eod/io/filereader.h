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
    FileReader() = default;
    // Open at once; throw SerializableError "Failed to open file '<path>'." on failure.
    explicit FileReader(const std::wstring& path);
    explicit FileReader(const std::string& path);

    // Closes whatever is open and opens the file for binary reading; never throws.
    bool open(const std::wstring& path);
    bool open(const std::string& path);
    void close();
    bool isOpen() const;
    // True exactly when the next byte is the end of the file.
    bool atEnd() const;

    // The next record through SerializableFactory::newObjectWithStatus, returned as the
    // factory returns it: null with status bit 1 for a skipped record of unknown id, null
    // with bit 4 for a file that ends inside a record, null with bit 8 for bytes the record
    // rejected. Usage errors: "files are not open", "Cannot reading when atEnd().".
    boost::shared_ptr<Serializable> read(unsigned int& status);

    // Read offset in bytes from the start of the file.
    unsigned int position() const;

private:
    [[noreturn]] void throwFileOpenError(const std::string& path);

    // Records are read a block at a time from the file rather than in small pieces.
    static constexpr std::size_t BUFFER_SIZE = 65536;

    // Declared before the stream so that it outlives the stream.
    std::unique_ptr<char[]> _buffer;
    mutable std::ifstream _stream;
    // The bytes of the record being read, kept from one record to the next.
    std::vector<unsigned char> _record_bytes;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
