#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>
#include <zlib.h>

#include <cassert>
#include <climits>
#include <string>

namespace tq {
namespace eod {
namespace io {

namespace {

// The smallest deflate window, 256 bytes: the stream favours low memory and latency over
// ratio. zlib 1.2.9 and later refuse it for raw streams (deflateInit2 returns
// Z_STREAM_ERROR, since zlib cannot write a correct 256-byte-window stream) and the
// smallest they accept is 512 bytes (-9). Either way a -15 inflater reads the result.
const int SMALLEST_DEFLATE_WINDOW_BITS = -8;
const int FALLBACK_DEFLATE_WINDOW_BITS = -9;
const int INFLATE_WINDOW_BITS = -15;
const int MEMORY_LEVEL = 8;

[[noreturn]] void throwInitError(const char* what, int rc) {
    throw SerializableError(std::string("ZLibCodecImpl - ") + what + " failed with error code " +
                            std::to_string(rc));
}

}  // namespace

ZLibCodecImpl::ZLibCodecImpl(bool deflating, std::size_t maxOutputSize)
    : _stream(new z_stream()),
      _output(INITIAL_OUTPUT_SIZE),
      _deflating(deflating),
      _max_output_size(maxOutputSize < INITIAL_OUTPUT_SIZE ? INITIAL_OUTPUT_SIZE : maxOutputSize) {
    // new z_stream() zero-initialises: null allocators select zlib's defaults, and the
    // input pointer and count start as null and 0.
    _stream->next_out = _output.data();
    _stream->avail_out = static_cast<uInt>(_output.size());
}

ZLibCodecImpl* ZLibCodecImpl::newDeflater(int level, unsigned int maxPendingRecords) {
    // Deflate output is bounded by its input, so its buffer may grow as far as a record needs.
    std::unique_ptr<ZLibCodecImpl> impl(new ZLibCodecImpl(true, UINT_MAX));
    impl->_max_pending_records = maxPendingRecords;
    impl->_window_bits = SMALLEST_DEFLATE_WINDOW_BITS;
    int rc = deflateInit2(impl->_stream.get(), level, Z_DEFLATED, impl->_window_bits, MEMORY_LEVEL,
                          Z_DEFAULT_STRATEGY);
    if (rc == Z_STREAM_ERROR) {
        impl->_window_bits = FALLBACK_DEFLATE_WINDOW_BITS;
        rc = deflateInit2(impl->_stream.get(), level, Z_DEFLATED, impl->_window_bits, MEMORY_LEVEL,
                          Z_DEFAULT_STRATEGY);
    }
    if (rc != Z_OK) {
        // Nothing to end: zlib frees its state itself when the initialisation fails.
        impl->_stream.reset();
        throwInitError("deflateInit2", rc);
    }
    return impl.release();
}

ZLibCodecImpl* ZLibCodecImpl::newInflater(std::size_t maxOutputSize) {
    std::unique_ptr<ZLibCodecImpl> impl(new ZLibCodecImpl(false, maxOutputSize));
    impl->_window_bits = INFLATE_WINDOW_BITS;
    const int rc = inflateInit2(impl->_stream.get(), impl->_window_bits);
    if (rc != Z_OK) {
        impl->_stream.reset();
        throwInitError("inflateInit2", rc);
    }
    return impl.release();
}

ZLibCodecImpl::~ZLibCodecImpl() {
    if (!_stream) return;
    if (_deflating) {
        deflateEnd(_stream.get());
    } else {
        inflateEnd(_stream.get());
    }
}

int ZLibCodecImpl::write(const unsigned char* data, unsigned int length) {
    if (length == 0) return Z_OK;
    _has_input = true;
    // zlib never writes through next_in; the pointer is merely not declared const.
    _stream->next_in = const_cast<Bytef*>(data);
    _stream->avail_in = length;
    return pump(Z_NO_FLUSH);
}

int ZLibCodecImpl::flush(int mode) {
    if (!_has_input) return Z_OK;
    dropInput();
    return pump(mode);
}

int ZLibCodecImpl::resume() { return pump(Z_NO_FLUSH); }

// Unlike a pump that stops as soon as the input is used up, this one also goes on while
// zlib filled the whole output space: otherwise the tail of a flushed chunk, or inflated
// bytes of a record that has fully arrived, would stay inside zlib until some later call.
int ZLibCodecImpl::pump(int flush) {
    z_stream& s = *_stream;
    for (;;) {
        if (s.avail_out == 0) {
            if (_output.size() >= _max_output_size) return Z_OK;
            grow(_output.size() * 2 > _max_output_size ? _max_output_size : _output.size() * 2);
        }
        const int rc = _deflating ? deflate(&s, flush) : inflate(&s, flush);
        if (rc == Z_BUF_ERROR) return Z_OK;
        if (rc != Z_OK) return rc;
        if (s.avail_in == 0 && s.avail_out != 0) return Z_OK;
    }
}

void ZLibCodecImpl::grow(std::size_t size) {
    const std::size_t used = _output.size() - _stream->avail_out;
    assert(size > _output.size() && "size > _end - _data");
    _output.resize(size);
    _stream->next_out = _output.data() + used;
    _stream->avail_out = static_cast<uInt>(size - used);
}

const char* ZLibCodecImpl::errorMessage() const { return _stream->msg; }

bool ZLibCodecImpl::outputFull() const { return _stream->avail_out == 0; }

bool ZLibCodecImpl::hasOutput() const { return _stream->next_out != _output.data(); }

void ZLibCodecImpl::takeOutput(std::vector<unsigned char>& out) {
    out.insert(out.end(), _output.data(), _stream->next_out);
    _stream->next_out = _output.data();
    _stream->avail_out = static_cast<uInt>(_output.size());
}

int ZLibCodecImpl::reset() {
    _has_input = _stream->avail_in != 0;
    _stream->next_out = _output.data();
    _stream->avail_out = static_cast<uInt>(_output.size());
    return _deflating ? deflateReset(_stream.get()) : inflateReset(_stream.get());
}

void ZLibCodecImpl::dropInput() {
    _stream->next_in = Z_NULL;
    _stream->avail_in = 0;
}

const unsigned char* ZLibCodecImpl::input() const { return _stream->next_in; }

unsigned int ZLibCodecImpl::inputLeft() const { return _stream->avail_in; }

void ZLibCodecImpl::moveInput(const unsigned char* data, unsigned int length) {
    _stream->next_in = const_cast<Bytef*>(data);
    _stream->avail_in = length;
}

std::uint32_t ZLibCodecImpl::crc(const unsigned char* data, std::size_t length) {
    uLong value = crc32(0L, Z_NULL, 0);
    // crc32 takes an unsigned int count; longer runs go in pieces.
    while (length > 0) {
        const uInt step = length > UINT_MAX ? UINT_MAX : static_cast<uInt>(length);
        value = crc32(value, data, step);
        data += step;
        length -= step;
    }
    return static_cast<std::uint32_t>(value);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
