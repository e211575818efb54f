#ifndef EOD_IO_COMPRESS_SERIALIZABLECOMPRESSORFACTORY_H
#define EOD_IO_COMPRESS_SERIALIZABLECOMPRESSORFACTORY_H

// Encoders and decoders made by codec name. Built in: "zlib" (the zlib record stream),
// "zstd", "lz4" (the same record framing over zstd and LZ4 streams), "lossless-image" and
// "vp8" (image codecs; other records pass through them losslessly). Layouts in
// docs/compression.md. The tables are process-wide and not locked: register codecs before
// other threads create any.

#include <eod/io/compress/codecsettings.h>
#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/serializablecompressorencoder.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {

class SerializableCompressorEncoderFactory {
  public:
    using Creator =
        std::function<std::unique_ptr<SerializableCompressorEncoder>(const CodecSettings&)>;

    // CompressionError "unknown codec: <name>" for a name nobody registered; settings out of
    // range for the codec are a usage error (std::invalid_argument).
    static std::unique_ptr<SerializableCompressorEncoder> create(const CodecSettings& settings);
    // Adds a codec, or replaces the one of the same name.
    static void registerCodec(const std::string& name, Creator creator);
    static bool isRegistered(const std::string& name);
    // Registered names in ascending order.
    static std::vector<std::string> codecNames();
};

class SerializableCompressorDecoderFactory {
  public:
    using Creator = std::function<std::unique_ptr<SerializableCompressorDecoder>()>;

    // CompressionError "unknown codec: <name>" for a name nobody registered.
    static std::unique_ptr<SerializableCompressorDecoder> create(const std::string& name);
    static void registerCodec(const std::string& name, Creator creator);
    static bool isRegistered(const std::string& name);
    static std::vector<std::string> codecNames();
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
