#ifndef EOD_IO_ZLIBCODECIMPL_H
#define EOD_IO_ZLIBCODECIMPL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// zlib's stream state stays out of the installed headers: users of the codec do not need
// zlib's headers, and the library links zlib privately.
struct z_stream_s;

namespace tq {
namespace eod {
namespace io {

// One raw zlib stream, deflating or inflating, with the output buffer it writes into.
// The stream is never finished: it lives as long as the object, so records deflated one
// after another share one dictionary. Results are zlib's codes: 0 (Z_OK) for success,
// a negative code for an error; Z_BUF_ERROR ("no progress possible", which zlib documents
// as not fatal) is reported as 0.
class ZLibCodecImpl {
  public:
    static constexpr std::size_t INITIAL_OUTPUT_SIZE = 4096;

    // A raw deflate stream (no zlib header or trailer) at `level` (-1 for zlib's default,
    // or 0 to 9), memory level 8, default strategy, with the smallest window the linked
    // zlib accepts (see windowBits()). Throws SerializableError when zlib refuses.
    static ZLibCodecImpl* newDeflater(int level, unsigned int maxPendingRecords);
    // A raw inflate stream with the largest window (-15), which reads raw deflate streams
    // of any window size. Its output buffer grows to at most maxOutputSize bytes; a pump
    // that fills it stops early (outputFull()) so the caller can take the bytes first.
    static ZLibCodecImpl* newInflater(std::size_t maxOutputSize);
    ~ZLibCodecImpl();

    ZLibCodecImpl(const ZLibCodecImpl&) = delete;
    ZLibCodecImpl& operator=(const ZLibCodecImpl&) = delete;

    // Feeds `length` bytes without flushing and pumps until zlib has taken all of them and
    // has no more output to give. Length 0 does nothing.
    int write(const unsigned char* data, unsigned int length);
    // Pumps with a zlib flush mode (Z_FULL_FLUSH, ...). Does nothing while the stream has
    // had no input since it was created or reset.
    int flush(int mode);
    // Goes on pumping the input left over by a pump that stopped on a full output buffer.
    int resume();

    // zlib's description of the last error, or null.
    const char* errorMessage() const;

    // True when the last pump stopped because the output buffer was full at its maximum.
    bool outputFull() const;
    bool hasOutput() const;
    // Appends the output produced so far to `out` and empties the output buffer.
    void takeOutput(std::vector<unsigned char>& out);
    std::size_t outputCapacity() const { return _output.size(); }

    // Starts the zlib stream afresh (deflateReset / inflateReset). Input not yet consumed
    // is kept: dropInput() first to discard it.
    int reset();
    void dropInput();
    // The input zlib has not taken yet, and a way to point it elsewhere (at a copy of the
    // same bytes) without pumping.
    const unsigned char* input() const;
    unsigned int inputLeft() const;
    void moveInput(const unsigned char* data, unsigned int length);

    // The raw window bits in use: -15 for inflate; for deflate -8 (a 256-byte window)
    // where the linked zlib accepts it, else -9.
    int windowBits() const { return _window_bits; }

    // Encoder bookkeeping: records fed since compressed output was last taken.
    unsigned int pendingRecords() const { return _pending_records; }
    void setPendingRecords(unsigned int n) { _pending_records = n; }
    unsigned int maxPendingRecords() const { return _max_pending_records; }

    // zlib's CRC-32 of `length` bytes, started from crc32(0, NULL, 0).
    static std::uint32_t crc(const unsigned char* data, std::size_t length);

  private:
    ZLibCodecImpl(bool deflating, std::size_t maxOutputSize);
    int pump(int flush);
    void grow(std::size_t size);

    std::unique_ptr<z_stream_s> _stream;
    std::vector<unsigned char> _output;
    const bool _deflating;
    const std::size_t _max_output_size;
    int _window_bits = 0;
    bool _has_input = false;
    unsigned int _pending_records = 0;
    unsigned int _max_pending_records = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
