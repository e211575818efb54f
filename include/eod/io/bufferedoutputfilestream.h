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
// Flushing (the behaviour of the GNU standard library this is built with): a buffer of n
// bytes holds at most n - 1 written bytes. A write shorter than the free space and than
// 1 KiB is copied into the buffer; any other write goes to the operating system at once,
// in one call together with the bytes already pending. So the buffer only ever holds
// whole writes, and a record written with one write() (as writeToBinaryStream and the log
// writer do) is handed over whole. flush(), close() and destruction hand over what is
// pending; with a size of 0 or less every write goes straight through. flush() means "to
// the operating system", not "to the disk" (no fsync).
//
// A process that dies (SIGKILL) loses the whole writes still in the buffer and nothing
// handed over before. A file can end inside a record only when the process dies during
// the system's write call (the kernel may stop a write between two pages) or the disk is
// full. Readers of per-object logs report such a torn tail as a corrupt log file after
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
