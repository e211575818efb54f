#include <eod/io/bufferedoutputfilestream.h>

#include <cstring>

#include "eod/io/detail/pathconversion.h"

namespace tq {
namespace eod {
namespace io {

BufferedOutputFileStream::BufferedOutputFileStream(const std::string& path, int mode,
                                                   int bufferSize)
    : _front(*std::ofstream::rdbuf()) {
    // The file buffer writes straight through; the buffering is _front's. Set before the
    // file is opened, the only time the file buffer takes it.
    std::ofstream::rdbuf()->pubsetbuf(nullptr, 0);
    std::ios::rdbuf(&_front);
    setBufferSize(bufferSize);
    open(path, static_cast<std::ios_base::openmode>(mode) | std::ios_base::out);
}

BufferedOutputFileStream::BufferedOutputFileStream(const std::wstring& path, int mode,
                                                   int bufferSize)
    : BufferedOutputFileStream(detail::narrowPath(path), mode, bufferSize) {}

BufferedOutputFileStream::~BufferedOutputFileStream() {
    if (is_open()) close();
    // _front goes before the base class: nothing may reach it from there.
    std::ios::rdbuf(std::ofstream::rdbuf());
}

void BufferedOutputFileStream::setBufferSize(int size) {
    _buffer_size = size;
    if (!_front.resize(size > 0 ? static_cast<std::size_t>(size) : 0)) {
        setstate(std::ios_base::badbit);
    }
}

void BufferedOutputFileStream::close() {
    if (is_open() && _front.pubsync() != 0) setstate(std::ios_base::badbit);
    std::ofstream::close();
}

bool BufferedOutputFileStream::FrontBuffer::resize(std::size_t size) {
    const bool handed_over = handOver();
    _memory.reset(size > 0 ? new char[size] : nullptr);
    setp(_memory.get(), _memory.get() + size);
    return handed_over;
}

bool BufferedOutputFileStream::FrontBuffer::handOver() {
    const std::streamsize pending = pptr() - pbase();
    if (pending == 0) return true;
    const bool ok = _sink.sputn(pbase(), pending) == pending;
    // Dropped even when the sink refused them: the stream is bad from here on anyway.
    setp(pbase(), epptr());
    return ok;
}

BufferedOutputFileStream::FrontBuffer::int_type BufferedOutputFileStream::FrontBuffer::overflow(
    int_type c) {
    if (!handOver()) return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    if (pptr() != epptr()) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
        return c;
    }
    return _sink.sputc(traits_type::to_char_type(c));
}

std::streamsize BufferedOutputFileStream::FrontBuffer::xsputn(const char* s, std::streamsize n) {
    if (n <= 0) return 0;
    if (n > epptr() - pptr()) {
        if (!handOver()) return 0;
        if (n > epptr() - pptr()) return _sink.sputn(s, n);
    }
    std::memcpy(pptr(), s, static_cast<std::size_t>(n));
    // pbump takes an int; the buffer's size is an int.
    pbump(static_cast<int>(n));
    return n;
}

int BufferedOutputFileStream::FrontBuffer::sync() {
    if (!handOver()) return -1;
    return _sink.pubsync();
}

BufferedOutputFileStream::FrontBuffer::pos_type BufferedOutputFileStream::FrontBuffer::seekoff(
    off_type off, std::ios_base::seekdir dir, std::ios_base::openmode which) {
    // tellp() asks for the position without moving: the file's plus what is pending.
    if (off == 0 && dir == std::ios_base::cur) {
        const pos_type file = _sink.pubseekoff(0, dir, which);
        return file == pos_type(off_type(-1)) ? file : file + off_type(pptr() - pbase());
    }
    if (!handOver()) return pos_type(off_type(-1));
    return _sink.pubseekoff(off, dir, which);
}

BufferedOutputFileStream::FrontBuffer::pos_type BufferedOutputFileStream::FrontBuffer::seekpos(
    pos_type pos, std::ios_base::openmode which) {
    if (!handOver()) return pos_type(off_type(-1));
    return _sink.pubseekpos(pos, which);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
