#ifndef EOD_IO_COMPRESS_DETAIL_FRAMEDCODEC_H
#define EOD_IO_COMPRESS_DETAIL_FRAMEDCODEC_H

// The "zstd" and "lz4" record codecs: records framed as in the zlib record stream (tag,
// CRC-32, length, each 4 bytes little-endian, then the record) and compressed by one
// long-lived byte stream (bytestream.h).

#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/serializablecompressorencoder.h>

#include <memory>
#include <string>
#include <vector>

#include "eod/io/compress/detail/bytestream.h"
#include "eod/io/detail/recordframes.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

class FramedEncoder : public SerializableCompressorEncoder {
  public:
    static constexpr unsigned int FRAME_HEADER_BYTES = RecordFrameParser::FRAME_HEADER_BYTES;
    static constexpr unsigned int MAX_RECORD_LENGTH = 64u << 20;

    // `name` prefixes the error messages ("ZstdEncoder").
    FramedEncoder(std::string name, std::unique_ptr<ByteStreamCompressor> stream);

    // SerializableError when the record refuses to serialise or is longer than
    // MAX_RECORD_LENGTH; nothing reaches the stream then.
    void encode(const Serializable& record, unsigned int tag,
                std::vector<unsigned char>& out) override;
    void flush(std::vector<unsigned char>& out) override;

  private:
    const std::string _name;
    std::unique_ptr<ByteStreamCompressor> _stream;
    std::vector<unsigned char> _frame;
};

// Errors are SerializableError, with the decoder made consistent first:
// - the stream is damaged, a frame's CRC-32 does not match ("<name>::decode() - CRC
//   mismatch") or a frame announces more than MAX_RECORD_LENGTH bytes ("<name>::decode() -
//   record length exceeds the maximum"): the stream starts afresh and every byte not yet
//   parsed is dropped, the rest of the input included; items queued before stay queued.
// - a record passes its CRC but cannot be rebuilt: it is skipped, the rest is decoded, and
//   the first such error is thrown at the end of the call.
class FramedDecoder : public SerializableCompressorDecoder {
  public:
    FramedDecoder(std::string name, std::unique_ptr<ByteStreamDecompressor> stream);

    void decode(const unsigned char* data, unsigned int length) override;
    DecoderData getNextWithStatus(unsigned int& status) override;

  private:
    const std::string _name;
    std::unique_ptr<ByteStreamDecompressor> _stream;
    RecordFrameParser _frames;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
