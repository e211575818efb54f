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
// Memory: the queue is bounded as in ZLibDecoder. Once it holds MAX_QUEUED_ITEMS items the
// byte stream stops and keeps the input not yet used; getNextWithStatus goes on decoding when
// the queue runs empty (the errors above then come from it). So a few compressed bytes that
// decompress to millions of empty frames never fill the memory, and no record is lost.
class FramedDecoder : public SerializableCompressorDecoder {
  public:
    static constexpr std::size_t MAX_QUEUED_ITEMS = 4096;

    FramedDecoder(std::string name, std::unique_ptr<ByteStreamDecompressor> stream);

    void decode(const unsigned char* data, unsigned int length) override;
    DecoderData getNextWithStatus(unsigned int& status) override;

    std::size_t numQueued() const { return _frames.queue().size(); }

  private:
    // Decompresses and parses until the input is used up or the queue is full.
    void run(const unsigned char* data, std::size_t length);

    const std::string _name;
    std::unique_ptr<ByteStreamDecompressor> _stream;
    RecordFrameParser _frames;
    // Whether the byte stream stopped early and holds input or output.
    bool _stopped = false;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
