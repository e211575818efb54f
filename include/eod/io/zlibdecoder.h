#ifndef EOD_IO_ZLIBDECODER_H
#define EOD_IO_ZLIBDECODER_H

#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/zlibcodec.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

// Inflates a raw deflate stream of framed records (layout in zlibcodec.h) that arrives in
// chunks of any size, checks each record's CRC-32 and rebuilds it through
// SerializableFactory. A final deflate block (from another deflater that finished its
// stream) ends nothing: the bytes after it are read as a new raw stream.
//
// Errors: decode() throws SerializableError, and first makes the decoder consistent again:
// - inflate reports an error ("ZLibDecoder::decode() - inflate failed with error code N"),
//   a record's CRC-32 does not match ("ZLibDecoder::decode() - CRC mismatch"), or a frame
//   announces more than MAX_RECORD_LENGTH bytes ("ZLibDecoder::decode() - record length
//   exceeds the maximum"): the inflate stream is reset and every byte not yet parsed is
//   discarded, the rest of the current input included. Records queued before stay queued.
//   The decoder can go on only at a point where the encoder fully flushed.
// - a record passes its CRC but cannot be rebuilt (the factory's own messages), or does
//   not fill its frame ("ZLibDecoder::decode() - record does not fill its frame"): that
//   record is skipped, the rest of the input is still decoded, and the first such error is
//   thrown at the end of the call.
// Memory: inflated bytes are parsed in steps of at most MAX_INFLATE_STEP bytes, and a
// frame waits for its bytes without reserving room for them, so memory follows the bytes
// that actually arrive, up to about MAX_RECORD_LENGTH for one unfinished record.
class ZLibDecoder : public ZLibCodec<SerializableCompressorDecoder> {
  public:
    static constexpr unsigned int MAX_INFLATE_STEP = 256u << 10;

    ZLibDecoder();
    ~ZLibDecoder() override;

    // data may be null when length is 0; a call with no bytes parses nothing new.
    void decode(const unsigned char* data, unsigned int length) override;
    // The oldest item. An empty queue sets bit 4 and returns an empty item; an item whose
    // record has an unregistered object id comes with a null record and bit 1; a frame of
    // length 0 gives its tag and a null record.
    DecoderData getNextWithStatus(unsigned int& status) override;

    // Inflated bytes waiting for the rest of their record.
    std::size_t numPendingBytes() const { return _pending.size(); }

  private:
    struct QueuedItem {
        DecoderData data;
        unsigned int status;
    };

    // Parses every complete frame at the front of the pending bytes. Returns false when the
    // stream is corrupt (`error` says why); a record that cannot be rebuilt only sets
    // `record_error` if it is still empty.
    bool parsePending(std::string& error, std::string& record_error);
    [[noreturn]] void resetAndThrow(const std::string& error);

    std::vector<unsigned char> _pending;
    // The record being rebuilt, copied out of the pending bytes; kept from record to record.
    std::vector<unsigned char> _record;
    std::deque<QueuedItem> _queue;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
