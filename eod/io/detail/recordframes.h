#ifndef EOD_IO_DETAIL_RECORDFRAMES_H
#define EOD_IO_DETAIL_RECORDFRAMES_H

// Records framed for the compressed record streams (the zlib record stream and the "zstd"
// and "lz4" codecs): a 12-byte header holding the caller's tag, the CRC-32 of the record
// and the record's length, each 4 bytes little-endian, then the record.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "eod/io/detail/decodedqueue.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

class RecordFrameParser {
  public:
    static constexpr unsigned int FRAME_HEADER_BYTES = 12;
    enum class Parse { ok, crc_mismatch, too_long };

    // `decoder_name` starts the message of a record that does not fill its frame
    // ("<name>::decode() - record does not fill its frame"); the buffer a record is rebuilt
    // from is released after a record longer than `kept_record_capacity` bytes.
    RecordFrameParser(std::string decoder_name, std::size_t kept_record_capacity);

    // Decompressed bytes not yet parsed: the decompressor appends to them.
    std::vector<unsigned char>& pending() { return _pending; }
    // Released rather than cleared: they may have held most of a very long record.
    void dropPending() { std::vector<unsigned char>().swap(_pending); }

    // Parses every complete frame at the front of the pending bytes into the queue: the
    // record rebuilt through SerializableFactory, a null record with bit 1 for an
    // unregistered object id, a null record for a frame of length 0. A record that passes its
    // CRC but cannot be rebuilt, or does not fill its frame, is skipped and sets
    // `record_error` if that is still empty. Stops, leaving the frame pending, at a frame that
    // announces more than `max_record_length` bytes (checked before its bytes arrive, so a
    // forged length cannot make the caller hoard input) or whose CRC does not match.
    Parse parse(std::uint32_t max_record_length, std::string& record_error);

    DecodedQueue& queue() { return _queue; }
    const DecodedQueue& queue() const { return _queue; }

  private:
    const std::string _decoder_name;
    const std::size_t _kept_record_capacity;
    std::vector<unsigned char> _pending;
    // The record being rebuilt, copied out of the pending bytes so that a record whose own
    // header says more cannot read into the next frame; kept from record to record.
    std::vector<unsigned char> _record;
    DecodedQueue _queue;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
