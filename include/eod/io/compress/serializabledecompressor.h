#ifndef EOD_IO_COMPRESS_SERIALIZABLEDECOMPRESSOR_H
#define EOD_IO_COMPRESS_SERIALIZABLEDECOMPRESSOR_H

#include <eod/compressedserializable.h>
#include <eod/io/serializablecompressordecoder.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace tq {
namespace eod {
namespace io {

// Takes back the CompressedSerializable records of a SerializableCompressor, in order, and
// yields the records they carry.
class SerializableDecompressor {
  public:
    // A decoder from the factory (CompressionError for an unknown codec name).
    explicit SerializableDecompressor(const std::string& codec);
    explicit SerializableDecompressor(std::unique_ptr<SerializableCompressorDecoder> decoder);

    SerializableDecompressor(const SerializableDecompressor&) = delete;
    SerializableDecompressor& operator=(const SerializableDecompressor&) = delete;

    // The decoder's errors propagate (SerializableError for damaged bytes).
    void decompress(const CompressedSerializable& record);
    // The oldest record with its tag; status as SerializableCompressorDecoder's.
    DecoderData getNextWithStatus(unsigned int& status);
    // The oldest record, or null when none is waiting.
    boost::shared_ptr<Serializable> getNext();

  private:
    std::unique_ptr<SerializableCompressorDecoder> _decoder;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
