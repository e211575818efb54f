#ifndef EOD_IO_SERIALIZABLECOMPRESSORENCODER_H
#define EOD_IO_SERIALIZABLECOMPRESSORENCODER_H

#include <eod/serializable.h>

#include <vector>

namespace tq {
namespace eod {
namespace io {

// Turns a sequence of tagged records into one continuous compressed byte stream.
// Compressed bytes are appended to the caller's vector whenever the encoder has some to
// hand out; an encoder may keep records back to compress them together, until flush().
class SerializableCompressorEncoder {
  public:
    SerializableCompressorEncoder() = default;
    SerializableCompressorEncoder(const SerializableCompressorEncoder&) = delete;
    SerializableCompressorEncoder& operator=(const SerializableCompressorEncoder&) = delete;
    virtual ~SerializableCompressorEncoder() = default;

    virtual void encode(const Serializable& record, unsigned int tag,
                        std::vector<unsigned char>& out) = 0;
    // Appends everything held back, so that a decoder given all bytes so far can rebuild
    // every record encoded so far.
    virtual void flush(std::vector<unsigned char>& out) = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
