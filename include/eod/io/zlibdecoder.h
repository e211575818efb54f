#ifndef EOD_IO_ZLIBDECODER_H
#define EOD_IO_ZLIBDECODER_H

#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/zlibcodec.h>

#include <cstddef>
#include <cstdint>
#include <memory>
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
// A record whose CRC-32 does not match resets the inflate stream and discards every byte
// not yet parsed, the rest of the current input included, without an exception; records
// queued before stay queued and numCrcMismatches() counts the event. The decoder can go on
// only at a point where the encoder fully flushed.
//
// Errors: SerializableError, after the decoder is made consistent again:
// - inflate reports an error ("ZLibDecoder::decode() - inflate failed with error code N"),
//   or a frame announces more than maxRecordLength() bytes ("ZLibDecoder::decode() -
//   record length exceeds the maximum"): reset and discard as for a CRC mismatch.
// - a record passes its CRC but cannot be rebuilt (the factory's own messages), or does
//   not fill its frame ("ZLibDecoder::decode() - record does not fill its frame"): that
//   record is skipped, the rest of the input is still decoded, and the first such error is
//   thrown at the end of the call.
//
// Memory: inflated bytes are parsed in steps of at most MAX_INFLATE_STEP bytes, and a
// frame waits for its bytes without reserving room for them, so memory follows the bytes
// that actually arrive. The queue is bounded: once it holds MAX_QUEUED_ITEMS items,
// decoding stops and the compressed bytes not yet inflated are kept (a copy). Taking items
// with getNextWithStatus goes on decoding them when the queue runs empty, so a caller that
// drains the queue after each decode() loses no record, and a few compressed bytes that
// inflate to millions of empty frames never fill the memory. The errors above then come
// from the getNextWithStatus call that does the decoding.
class ZLibDecoder : public ZLibCodec<SerializableCompressorDecoder> {
  public:
    static constexpr unsigned int MAX_INFLATE_STEP = 256u << 10;
    static constexpr std::size_t MAX_QUEUED_ITEMS = 4096;
    // Every length a frame can carry: no limit.
    static constexpr std::uint32_t NO_RECORD_LENGTH_LIMIT = UINT32_MAX;

    ZLibDecoder();
    ~ZLibDecoder() override;

    // data may be null when length is 0; a call with no bytes only goes on with bytes kept
    // back.
    void decode(const unsigned char* data, unsigned int length) override;
    // The oldest item. An empty queue sets bit 4 and returns an empty item; an item whose
    // record has an unregistered object id comes with a null record and bit 1; a frame of
    // length 0 gives its tag and a null record.
    DecoderData getNextWithStatus(unsigned int& status) override;

    // Inflated bytes waiting for the rest of their record.
    std::size_t numPendingBytes() const;
    // Compressed bytes kept back while the queue was full.
    std::size_t numHeldBytes() const;
    // Records lost to CRC mismatches: the number of mismatches seen (each one also drops
    // whatever else was pending).
    unsigned long long numCrcMismatches() const { return _crc_mismatches; }

    // Largest record length a frame may announce, for readers of bytes from outside that
    // want to refuse a hostile stream early; no limit unless set.
    void setMaxRecordLength(std::uint32_t max_record_length) {
        _max_record_length = max_record_length;
    }
    std::uint32_t maxRecordLength() const { return _max_record_length; }

  private:
    // Inflates and parses, starting from the pump's result rc, until the input is used up
    // or the queue is full; then keeps what is left of the input.
    void run(int rc, std::string& record_error);
    void keepInput();
    // Resets the inflate stream and drops every byte not yet parsed.
    void dropAll();
    [[noreturn]] void resetAndThrow(const std::string& error);

    // Inflated bytes, parsed into the queue of records.
    class Frames;
    std::unique_ptr<Frames> _frames;
    // Compressed bytes not yet inflated when the queue filled up; zlib's input points here.
    std::vector<unsigned char> _held;
    // Whether decoding stopped early: input or output is left inside zlib.
    bool _stopped = false;
    unsigned long long _crc_mismatches = 0;
    std::uint32_t _max_record_length = NO_RECORD_LENGTH_LIMIT;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
