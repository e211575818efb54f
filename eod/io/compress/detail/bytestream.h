#ifndef EOD_IO_COMPRESS_DETAIL_BYTESTREAM_H
#define EOD_IO_COMPRESS_DETAIL_BYTESTREAM_H

// General-purpose compressed byte streams under the framed record codecs: one long-lived
// stream per object that is flushed at chunk ends and never ended, so that records compressed
// one after another share one history.

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace tq {
namespace eod {
namespace io {
namespace detail {

class ByteStreamCompressor {
  public:
    virtual ~ByteStreamCompressor() = default;
    // Compresses the bytes; whatever the library hands out already is appended to out.
    virtual void write(const unsigned char* data, std::size_t length,
                       std::vector<unsigned char>& out) = 0;
    // Appends everything held back, so that all bytes written so far can be decompressed.
    virtual void flush(std::vector<unsigned char>& out) = 0;
};

class ByteStreamDecompressor {
  public:
    // The most bytes handed to the sink at once.
    static constexpr std::size_t MAX_STEP = 256u << 10;
    // Takes a piece of output; false asks the decompressor to stop after it.
    using Sink = std::function<bool(const unsigned char*, std::size_t)>;

    virtual ~ByteStreamDecompressor() = default;
    // Decompresses the input, handing the output to sink in pieces of at most MAX_STEP bytes
    // as it is produced. A stream that ends is followed by a new one. When the sink asks to
    // stop, the input not yet used is kept (a copy) and false is returned; the next call,
    // with more input or none, goes on with the kept bytes first. True when everything
    // given so far has been decompressed. Throws SerializableError (naming `owner`) on
    // damaged input; call reset() afterwards.
    virtual bool decompress(const unsigned char* data, std::size_t length, const Sink& sink) = 0;
    // Starts afresh: kept bytes are dropped and the next bytes begin a new stream.
    virtual void reset() = 0;
};

// level: CodecSettings::DEFAULT_LEVEL or the library's range (zstd 1..19, lz4 0..12).
std::unique_ptr<ByteStreamCompressor> newZstdCompressor(int level);
std::unique_ptr<ByteStreamDecompressor> newZstdDecompressor(const char* owner);
std::unique_ptr<ByteStreamCompressor> newLz4Compressor(int level);
std::unique_ptr<ByteStreamDecompressor> newLz4Decompressor(const char* owner);

// One zstd frame holding `length` bytes, and its reverse: true when the data is exactly one
// whole frame of at most max_bytes bytes. Memory grows with the bytes actually
// decompressed, never with a size the frame declares.
void zstdCompressOnce(const unsigned char* data, std::size_t length, int level,
                      std::vector<unsigned char>& out);
bool zstdDecompressOnce(const unsigned char* data, std::size_t length, std::size_t max_bytes,
                        std::vector<unsigned char>& out);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
