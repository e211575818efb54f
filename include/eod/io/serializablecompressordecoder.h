#ifndef EOD_IO_SERIALIZABLECOMPRESSORDECODER_H
#define EOD_IO_SERIALIZABLECOMPRESSORDECODER_H

#include <eod/io/decoderdata.h>

namespace tq {
namespace eod {
namespace io {

// Rebuilds the records of a stream written by the matching encoder. The stream may arrive
// in chunks of any size; decoded items wait in a first-in first-out queue.
class SerializableCompressorDecoder {
  public:
    SerializableCompressorDecoder() = default;
    SerializableCompressorDecoder(const SerializableCompressorDecoder&) = delete;
    SerializableCompressorDecoder& operator=(const SerializableCompressorDecoder&) = delete;
    virtual ~SerializableCompressorDecoder() = default;

    virtual void decode(const unsigned char* data, unsigned int length) = 0;
    // The oldest decoded item. An empty queue sets status bit 4 (not enough data) and
    // returns an empty item. Bits are ORed into status.
    virtual DecoderData getNextWithStatus(unsigned int& status) = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
