#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include <cstring>
#include <utility>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/bytestream.h"
#include "eod/io/compress/detail/imagecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

// The record byte codec lives one namespace up, hidden by this one.
using ::tq::eod::detail::appendNumber;
using ::tq::eod::detail::appendU32;
using ::tq::eod::detail::loadU32;

namespace {

// Geometry before the pixels of an image packet: width, height, bytes per line, format.
const std::size_t GEOMETRY_BYTES = 16;
// VP8 takes lines of up to this much padding beyond the width; more would let a hostile
// packet make the decoder allocate far beyond what the video frame holds.
const std::size_t MAX_VP8_PADDING = 4096;

struct Geometry {
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int bytes_per_line = 0;
    int format = 0;
    std::string identifier;
    std::size_t rawBytes() const { return std::size_t(height) * bytes_per_line; }
};

void appendGeometry(const ImageOutputData& image, std::vector<unsigned char>& body) {
    appendNumber(body, image.width());
    appendNumber(body, image.height());
    appendNumber(body, image.bytesPerLine());
    appendNumber(body, image.imageFormat());
    const std::string id = image.imageIdentifier();
    body.insert(body.end(), id.begin(), id.end());
    body.push_back(0);
}

// Reads the geometry at the front of a body; returns the bytes it took, or 0 when the body
// is too short or the identifier has no terminator.
std::size_t readGeometry(const unsigned char* body, std::size_t length, Geometry& g) {
    if (length < GEOMETRY_BYTES) return 0;
    g.width = loadU32(body);
    g.height = loadU32(body + 4);
    g.bytes_per_line = loadU32(body + 8);
    g.format = static_cast<int>(loadU32(body + 12));
    const unsigned char* start = body + GEOMETRY_BYTES;
    const void* end = std::memchr(start, 0, length - GEOMETRY_BYTES);
    if (!end) return 0;
    g.identifier.assign(reinterpret_cast<const char*>(start),
                        static_cast<const unsigned char*>(end) - start);
    return GEOMETRY_BYTES + g.identifier.size() + 1;
}

[[noreturn]] void damaged(const std::string& why) {
    throw SerializableError("ImageDecoder::decode() - " + why);
}

}  // namespace

namespace {

// The mean of the left and upper neighbours; the upper one alone in the first column, the
// left one alone in the first line, 0 for the first byte.
inline int predicted(const unsigned char* line, const unsigned char* up, std::size_t x) {
    if (up) return x > 0 ? (line[x - 1] + up[x]) >> 1 : up[x];
    return x > 0 ? line[x - 1] : 0;
}

}  // namespace

void filterLines(const unsigned char* src, unsigned int height, std::size_t stride,
                 unsigned char* dst) {
    for (unsigned int y = 0; y < height; ++y) {
        const unsigned char* line = src + y * stride;
        const unsigned char* up = y > 0 ? line - stride : nullptr;
        unsigned char* out = dst + y * stride;
        for (std::size_t x = 0; x < stride; ++x) {
            out[x] = static_cast<unsigned char>(line[x] - predicted(line, up, x));
        }
    }
}

void unfilterLines(unsigned char* data, unsigned int height, std::size_t stride) {
    for (unsigned int y = 0; y < height; ++y) {
        unsigned char* line = data + y * stride;
        const unsigned char* up = y > 0 ? line - stride : nullptr;
        for (std::size_t x = 0; x < stride; ++x) {
            line[x] = static_cast<unsigned char>(line[x] + predicted(line, up, x));
        }
    }
}

ImageEncoder::ImageEncoder(const CodecSettings& settings, bool useVp8) : _settings(settings) {
    EOD_REQUIRE(settings.level == CodecSettings::DEFAULT_LEVEL ||
                    (settings.level >= 1 && settings.level <= 19),
                "zstd level should be -1 or between 1 and 19");
    if (useVp8) {
        EOD_REQUIRE(settings.quality >= 0 && settings.quality <= 100,
                    "quality should be between 0 and 100");
        EOD_REQUIRE(settings.keyframeInterval >= 1, "keyframeInterval should be at least 1");
        _vp8.reset(new Vp8Encoder(settings.quality, settings.keyframeInterval));
    }
}

bool ImageEncoder::fitsVp8(const ImageOutputData& image) const {
    return _vp8 && image.imageFormat() == _settings.greyImageFormat && image.rawData() &&
           image.width() >= 1 && image.height() >= 1 && image.width() <= MAX_VP8_DIMENSION &&
           image.height() <= MAX_VP8_DIMENSION && image.bytesPerLine() >= image.width() &&
           image.bytesPerLine() - image.width() <= MAX_VP8_PADDING;
}

void ImageEncoder::appendBody(const ImageOutputData* image, const Serializable& record,
                              std::vector<unsigned char>& body, unsigned char& method) {
    if (!image) {
        method = PACKET_RECORD;
        _scratch.clear();
        record.serialize(_scratch);
        zstdCompressOnce(_scratch.data(), _scratch.size(), _settings.level, body);
        return;
    }
    appendGeometry(*image, body);
    if (fitsVp8(*image)) {
        method = PACKET_VP8_IMAGE;
        _vp8->encode(image->rawData(), image->width(), image->height(), image->bytesPerLine(),
                     body);
        return;
    }
    method = PACKET_LOSSLESS_IMAGE;
    const std::size_t size = image->height() * std::size_t(image->bytesPerLine());
    _scratch.resize(size);
    if (size > 0) filterLines(image->rawData(), image->height(), image->bytesPerLine(),
                              _scratch.data());
    zstdCompressOnce(_scratch.data(), size, _settings.level, body);
}

void ImageEncoder::encode(const Serializable& record, unsigned int tag,
                          std::vector<unsigned char>& out) {
    if (!record.serializeEnabled()) {
        throw SerializableError("Serializable::serialize() - trying to serialize invalid object.");
    }
    const ImageOutputData* image = dynamic_cast<const ImageOutputData*>(&record);
    if (image && image->height() * std::size_t(image->bytesPerLine()) > MAX_IMAGE_PACKET_BODY) {
        throw SerializableError("ImageEncoder::encode() - image larger than the packet limit");
    }
    _body.clear();
    unsigned char method = PACKET_RECORD;
    appendBody(image, record, _body, method);
    if (_body.size() > MAX_IMAGE_PACKET_BODY) {
        throw SerializableError("ImageEncoder::encode() - record larger than the packet limit");
    }
    out.push_back(method);
    appendU32(out, tag);
    appendU32(out, ZLibCodecImpl::crc(_body.data(), _body.size()));
    appendU32(out, static_cast<std::uint32_t>(_body.size()));
    out.insert(out.end(), _body.begin(), _body.end());
}

void ImageDecoder::decode(const unsigned char* data, unsigned int length) {
    EOD_REQUIRE(data != nullptr || length == 0, "data is NULL");
    if (length > 0) _pending.insert(_pending.end(), data, data + length);
    std::size_t pos = 0;
    try {
        while (_pending.size() - pos >= IMAGE_PACKET_HEADER_BYTES) {
            const unsigned char* header = _pending.data() + pos;
            const unsigned char method = header[0];
            const std::uint32_t body_length = loadU32(header + 9);
            if (method > PACKET_VP8_IMAGE) damaged("unknown packet method");
            if (body_length > MAX_IMAGE_PACKET_BODY) damaged("packet length exceeds the maximum");
            if (_pending.size() - pos - IMAGE_PACKET_HEADER_BYTES < body_length) break;
            const unsigned char* body = header + IMAGE_PACKET_HEADER_BYTES;
            if (ZLibCodecImpl::crc(body, body_length) != loadU32(header + 5)) {
                damaged("CRC mismatch");
            }
            DecoderData item;
            item.tag = loadU32(header + 1);
            unsigned int status = 0;
            item.record = decodeBody(method, body, body_length, status);
            _queue.push(std::move(item), status);
            pos += IMAGE_PACKET_HEADER_BYTES + body_length;
        }
    } catch (const SerializableError&) {
        std::vector<unsigned char>().swap(_pending);
        throw;
    }
    _pending.erase(_pending.begin(), _pending.begin() + static_cast<std::ptrdiff_t>(pos));
}

boost::shared_ptr<Serializable> ImageDecoder::decodeBody(unsigned char method,
                                                         const unsigned char* body,
                                                         std::size_t length,
                                                         unsigned int& status) {
    if (method == PACKET_RECORD) {
        if (!zstdDecompressOnce(body, length, MAX_IMAGE_PACKET_BODY, _scratch)) {
            damaged("record packet does not decompress");
        }
        int read_pos = 0;
        boost::shared_ptr<Serializable> record = SerializableFactory::newObject(_scratch, read_pos);
        if (static_cast<std::size_t>(read_pos) != _scratch.size()) {
            damaged("record does not fill its packet");
        }
        if (!record) status |= Serializable::STATUS_UNKNOWN_OBJECT_ID;
        return record;
    }
    Geometry g;
    const std::size_t used = readGeometry(body, length, g);
    if (used == 0) damaged("image geometry cut short");
    if (g.rawBytes() > MAX_IMAGE_PACKET_BODY) damaged("image larger than the packet limit");
    body += used;
    length -= used;
    boost::shared_ptr<ImageOutputData> image(new ImageOutputData);
    if (method == PACKET_LOSSLESS_IMAGE) {
        if (!zstdDecompressOnce(body, length, g.rawBytes(), _scratch) ||
            _scratch.size() != g.rawBytes()) {
            damaged("image pixels do not decompress to their size");
        }
        if (!_scratch.empty()) unfilterLines(_scratch.data(), g.height, g.bytes_per_line);
    } else {
        if (g.width < 1 || g.height < 1 || g.width > MAX_VP8_DIMENSION ||
            g.height > MAX_VP8_DIMENSION || g.bytes_per_line < g.width ||
            g.bytes_per_line - g.width > MAX_VP8_PADDING) {
            damaged("VP8 image geometry out of range");
        }
        if (!_vp8) _vp8.reset(new Vp8Decoder);
        _scratch.assign(g.rawBytes(), 0);
        if (!_vp8->decode(body, length, g.width, g.height, g.bytes_per_line, _scratch.data())) {
            damaged("VP8 frame does not decode");
        }
    }
    image->setNewImage(g.width, g.height, g.bytes_per_line,
                       _scratch.empty() ? nullptr : _scratch.data(), g.format);
    image->setImageIdentifier(g.identifier);
    return image;
}

DecoderData ImageDecoder::getNextWithStatus(unsigned int& status) {
    return _queue.takeNext(status);
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
