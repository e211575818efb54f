#ifndef EOD_IO_COMPRESS_SERIALIZABLECOMPRESSOR_H
#define EOD_IO_COMPRESS_SERIALIZABLECOMPRESSOR_H

#include <eod/compressedserializable.h>
#include <eod/io/compress/codecsettings.h>
#include <eod/io/serializablecompressorencoder.h>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <vector>

namespace tq {
namespace eod {
namespace io {

// Takes records and hands out their compressed bytes as CompressedSerializable records,
// ready to be written or sent like any other record. A SerializableDecompressor of the same
// codec, given those records in order, gives the records back.
class SerializableCompressor {
  public:
    // An encoder from the factory (CompressionError for an unknown codec name).
    explicit SerializableCompressor(const CodecSettings& settings);
    explicit SerializableCompressor(std::unique_ptr<SerializableCompressorEncoder> encoder);

    SerializableCompressor(const SerializableCompressor&) = delete;
    SerializableCompressor& operator=(const SerializableCompressor&) = delete;

    // The encoder's errors propagate (SerializableError for a record that refuses to
    // serialise); the records compressed before stay good.
    void compress(const Serializable& record, unsigned int tag = 0);
    // Ends the current chunk: afterwards getNext() holds everything compressed so far.
    void flush();
    // The compressed bytes produced since the last call as one record, or null when there
    // are none (the encoder may hold records back until flush()).
    boost::shared_ptr<CompressedSerializable> getNext();

  private:
    std::unique_ptr<SerializableCompressorEncoder> _encoder;
    std::vector<unsigned char> _bytes;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
