#ifndef EOD_IO_COMPRESS_DETAIL_IMAGECODEC_H
#define EOD_IO_COMPRESS_DETAIL_IMAGECODEC_H

// The "lossless-image" and "vp8" codecs: one packet per encoded record (layout in
// docs/compression.md). Both accept any record: what the VP8 path cannot take goes into a
// lossless image packet, and what is not an image into a record packet.

#include <eod/imageoutputdata.h>
#include <eod/io/compress/codecsettings.h>
#include <eod/io/serializablecompressordecoder.h>
#include <eod/io/serializablecompressorencoder.h>

#include <memory>
#include <string>
#include <vector>

#include "eod/io/compress/detail/vp8codec.h"
#include "eod/io/detail/decodedqueue.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

enum ImagePacketMethod : unsigned char {
    PACKET_RECORD = 0,
    PACKET_LOSSLESS_IMAGE = 1,
    PACKET_VP8_IMAGE = 2,
};

// Packet header: method (1), tag (4), CRC-32 of the body (4), body length (4).
constexpr unsigned int IMAGE_PACKET_HEADER_BYTES = 13;
// The longest body a decoder accepts; an image's raw data is limited to the same.
constexpr unsigned int MAX_IMAGE_PACKET_BODY = 64u << 20;

// The lossless line filter: every byte minus the mean of its left and upper neighbours
// (mod 256), in place of the byte; unfilter reverses it. Over height lines of stride bytes.
void filterLines(const unsigned char* src, unsigned int height, std::size_t stride,
                 unsigned char* dst);
void unfilterLines(unsigned char* data, unsigned int height, std::size_t stride);

class ImageEncoder : public SerializableCompressorEncoder {
  public:
    // useVp8: the "vp8" codec, else "lossless-image". Usage errors for settings out of range.
    ImageEncoder(const CodecSettings& settings, bool useVp8);

    void encode(const Serializable& record, unsigned int tag,
                std::vector<unsigned char>& out) override;
    // Packets are written whole by encode(): nothing is held back.
    void flush(std::vector<unsigned char>&) override {}

  private:
    bool fitsVp8(const ImageOutputData& image) const;
    void appendBody(const ImageOutputData* image, const Serializable& record,
                    std::vector<unsigned char>& body, unsigned char& method);

    const CodecSettings _settings;
    std::unique_ptr<Vp8Encoder> _vp8;
    std::vector<unsigned char> _scratch;
    std::vector<unsigned char> _body;
};

// Errors are SerializableError: a damaged packet (CRC, length, method, geometry, pixels that
// do not decode) drops every byte not yet parsed and throws "ImageDecoder::decode() - <why>";
// packets decoded before stay queued.
class ImageDecoder : public SerializableCompressorDecoder {
  public:
    ImageDecoder() = default;

    void decode(const unsigned char* data, unsigned int length) override;
    DecoderData getNextWithStatus(unsigned int& status) override;

  private:
    // Returns the rebuilt record; throws with the reason on damage.
    boost::shared_ptr<Serializable> decodeBody(unsigned char method, const unsigned char* body,
                                               std::size_t length, unsigned int& status);

    std::vector<unsigned char> _pending;
    std::vector<unsigned char> _scratch;
    std::unique_ptr<Vp8Decoder> _vp8;
    DecodedQueue _queue;
};

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
