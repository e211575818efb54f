#ifndef EOD_IO_BUFFEREDOUTPUTFILESTREAM_H
#define EOD_IO_BUFFEREDOUTPUTFILESTREAM_H

#include <fstream>
#include <memory>
#include <streambuf>
#include <string>

namespace tq {
namespace eod {
namespace io {

// An output file stream with a buffer of a chosen size, which setBufferSize can change at
// any time, also while the file is open.
//
// The buffer is the stream's own (a stream buffer in front of the file buffer, which
// itself buffers nothing), because the standard file buffer here honours a new buffer only
// while no file is open. Flushing: a write that fits into the free space of the buffer is
// copied into it; any other write first hands over what is pending, and is then copied
// into the emptied buffer when it fits or else goes to the operating system at once, in
// one call. So the buffer only ever holds whole writes, and a record written with one
// write() (as writeToBinaryStream and the log writer do) is handed over whole. flush(),
// close() and destruction hand over what is pending; with a size of 0 or less every write
// goes straight through. flush() means "to the operating system", not "to the disk" (no
// fsync).
//
// A process that dies (SIGKILL) loses the whole writes still in the buffer and nothing
// handed over before. A file can end inside a record only when the process dies during
// the system's write call (the kernel may stop a write between two pages) or the disk is
// full. Readers of per-object logs report such a torn tail as a corrupt log file.
//
// close() is redefined here to hand over the buffer first: call it through this class, not
// through a std::ofstream reference. The destructor closes the stream and frees the buffer.
class BufferedOutputFileStream : public std::ofstream {
public:
    // Opens `path` for output with the open-mode bits `mode` (std::ios_base::openmode
    // values; out is always added), then setBufferSize(bufferSize). A file that cannot be
    // opened leaves the stream failed and not open, as std::ofstream does.
    BufferedOutputFileStream(const std::string& path, int mode, int bufferSize);
    BufferedOutputFileStream(const std::wstring& path, int mode, int bufferSize);
    ~BufferedOutputFileStream() override;

    // Hands over what is pending (on an open stream), frees the old buffer and installs one
    // of `size` bytes, used by the writes that follow; 0 or less: no buffer.
    void setBufferSize(int size);
    int bufferSize() const { return _buffer_size; }

    // Hands over the buffer, then closes the file.
    void close();

private:
    // The buffer in front of the file buffer.
    class FrontBuffer : public std::streambuf {
    public:
        explicit FrontBuffer(std::streambuf& sink) : _sink(sink) {}
        // Hands over what is pending, then uses `size` bytes of new memory (none for 0).
        // False when handing over failed; the new buffer is installed either way.
        bool resize(std::size_t size);

    protected:
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* s, std::streamsize n) override;
        int sync() override;
        pos_type seekoff(off_type off, std::ios_base::seekdir dir,
                         std::ios_base::openmode which) override;
        pos_type seekpos(pos_type pos, std::ios_base::openmode which) override;

    private:
        bool handOver();

        std::streambuf& _sink;
        std::unique_ptr<char[]> _memory;
    };

    FrontBuffer _front;
    int _buffer_size = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
