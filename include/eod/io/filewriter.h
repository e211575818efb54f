#ifndef EOD_IO_FILEWRITER_H
#define EOD_IO_FILEWRITER_H

// Writes a raw record file: each record exactly as Serializable::writeToBinaryStream
// writes it, one after another.

#include <fstream>
#include <memory>
#include <string>

#include <eod/serializable.h>
#include <eod/io/fileerrors.h>

namespace tq {
namespace eod {
namespace io {

class FileWriter {
public:
    FileWriter();
    // Open at once; throw SerializableError "Failed to open file '<path>'." on failure.
    explicit FileWriter(const std::wstring& path);
    explicit FileWriter(const std::string& path);
    ~FileWriter();

    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    // Opens for binary writing, truncating an existing file, with a 64 KiB buffer.
    // Never throws.
    bool open(const std::wstring& path);
    bool open(const std::string& path);
    // Flushes, closes, clears the stream's error flags and empties filePath().
    void close();
    bool isOpen() const;

    // A record switched off for serialisation is skipped and true returned. A failed write
    // closes the writer and returns false. "files are not open" (usage error) even here.
    bool writeNoThrow(const Serializable& record);
    // writeNoThrow, throwing SerializableError "Failed to write to file '<path>'." on
    // failure; the writer is closed by then, so the path in the text is empty.
    void write(const Serializable& record);

    // Bytes written so far.
    unsigned int size() const;
    std::wstring filePath() const { return _file_path; }

private:
    static constexpr std::size_t BUFFER_SIZE = 65536;

    // Declared before the stream so that it outlives the stream's final flush.
    std::unique_ptr<char[]> _buffer;
    mutable std::ofstream _stream;
    std::wstring _file_path;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
