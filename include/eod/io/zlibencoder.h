#ifndef EOD_IO_ZLIBENCODER_H
#define EOD_IO_ZLIBENCODER_H

#include <eod/io/serializablecompressorencoder.h>
#include <eod/io/zlibcodec.h>

#include <cstddef>
#include <vector>

namespace tq {
namespace eod {
namespace io {

// Deflates framed records (layout in zlibcodec.h) into one long-lived raw deflate stream.
//
// encode() hands out compressed bytes as soon as deflate produces some; while it produces
// none, records are held back, and once more than maxPendingRecords records are held the
// encoder flushes by itself. flush() ends the chunk on a full flush (byte-aligned, fresh
// dictionary), so everything encoded so far can be decoded from the bytes handed out.
// A decoder that lost its place can resume only at such a flush point.
class ZLibEncoder : public ZLibCodec<SerializableCompressorEncoder> {
  public:
    // level: -1 (zlib's default) or 0 to 9; maxPendingRecords >= 0. Anything else is a
    // usage error (std::invalid_argument).
    ZLibEncoder(int level, int maxPendingRecords);
    ~ZLibEncoder() override;

    // Serialises the record, frames it with `tag` and deflates it; a record of any size
    // that a frame's 32-bit length can carry. SerializableError when the record's
    // serializeEnabled() is false or it is longer than that; the stream is then left as it
    // was.
    void encode(const Serializable& record, unsigned int tag,
                std::vector<unsigned char>& out) override;
    // Emits nothing before the first record.
    void flush(std::vector<unsigned char>& out) override;

  private:
    void checkDeflate(int rc, const char* function);

    static constexpr std::size_t MAX_KEPT_FRAME_BYTES = 1u << 20;

    // Frame under construction, kept to reuse its memory.
    std::vector<unsigned char> _frame;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
