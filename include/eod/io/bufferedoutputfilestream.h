#ifndef EOD_IO_BUFFEREDOUTPUTFILESTREAM_H
#define EOD_IO_BUFFEREDOUTPUTFILESTREAM_H

#include <fstream>
#include <memory>
#include <string>

namespace tq {
namespace eod {
namespace io {

// An output file stream with a buffer of a chosen size.
//
// Flushing: written bytes collect in the buffer and reach the operating system when the
// buffer is full, on flush(), on close() and on destruction. A process that dies without
// any of these (SIGKILL, power loss) loses at most the bytes still in the buffer, which
// may end in the middle of a record; everything handed to the system before is in the
// file. Readers of per-object logs report such a torn tail as a corrupt log file after
// returning every complete frame.
//
// The buffer is installed before the file is opened, because the standard library here
// honours a stream buffer only on a stream that is not open. setBufferSize on an open
// stream only flushes and records the size (bufferSize() reports it): the buffer in use
// stays, also across close() and open(), until setBufferSize is called on a closed stream.
// The destructor closes the stream before it frees the buffer, so the final flush never
// touches released memory.
class BufferedOutputFileStream : public std::ofstream {
public:
    BufferedOutputFileStream(const std::string& path, std::ios_base::openmode mode,
                             int bufferSize);
    BufferedOutputFileStream(const std::wstring& path, std::ios_base::openmode mode,
                             int bufferSize);
    ~BufferedOutputFileStream() override;

    void setBufferSize(int size);
    int bufferSize() const { return _buffer_size; }

private:
    std::unique_ptr<char[]> _buffer;
    int _buffer_size = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
