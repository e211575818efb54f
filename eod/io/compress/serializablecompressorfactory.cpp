#include <eod/io/compress/compressionerror.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/zlibdecoder.h>
#include <eod/io/zlibencoder.h>

#include <map>
#include <utility>

#include "eod/io/compress/detail/bytestream.h"
#include "eod/io/compress/detail/framedcodec.h"
#include "eod/io/compress/detail/imagecodec.h"

namespace tq {
namespace eod {
namespace io {

namespace {

using EncoderTable = std::map<std::string, SerializableCompressorEncoderFactory::Creator>;
using DecoderTable = std::map<std::string, SerializableCompressorDecoderFactory::Creator>;

// Built on first use rather than at load time, with the built-in codecs in it.
EncoderTable& encoders() {
    static EncoderTable table = {
        {"zlib",
         [](const CodecSettings& s) {
             return std::unique_ptr<SerializableCompressorEncoder>(
                 new ZLibEncoder(s.level, s.maxPendingRecords));
         }},
        {"zstd",
         [](const CodecSettings& s) {
             return std::unique_ptr<SerializableCompressorEncoder>(
                 new detail::FramedEncoder("ZstdEncoder", detail::newZstdCompressor(s.level)));
         }},
        {"lz4",
         [](const CodecSettings& s) {
             return std::unique_ptr<SerializableCompressorEncoder>(
                 new detail::FramedEncoder("Lz4Encoder", detail::newLz4Compressor(s.level)));
         }},
        {"lossless-image",
         [](const CodecSettings& s) {
             return std::unique_ptr<SerializableCompressorEncoder>(
                 new detail::ImageEncoder(s, false));
         }},
        {"vp8",
         [](const CodecSettings& s) {
             return std::unique_ptr<SerializableCompressorEncoder>(
                 new detail::ImageEncoder(s, true));
         }},
    };
    return table;
}

DecoderTable& decoders() {
    static DecoderTable table = {
        {"zlib", [] { return std::unique_ptr<SerializableCompressorDecoder>(new ZLibDecoder); }},
        {"zstd",
         [] {
             return std::unique_ptr<SerializableCompressorDecoder>(new detail::FramedDecoder(
                 "ZstdDecoder", detail::newZstdDecompressor("ZstdDecoder::decode()")));
         }},
        {"lz4",
         [] {
             return std::unique_ptr<SerializableCompressorDecoder>(new detail::FramedDecoder(
                 "Lz4Decoder", detail::newLz4Decompressor("Lz4Decoder::decode()")));
         }},
        {"lossless-image",
         [] { return std::unique_ptr<SerializableCompressorDecoder>(new detail::ImageDecoder); }},
        {"vp8",
         [] { return std::unique_ptr<SerializableCompressorDecoder>(new detail::ImageDecoder); }},
    };
    return table;
}

template <class Table>
const typename Table::mapped_type& find(Table& table, const std::string& name) {
    const auto it = table.find(name);
    if (it == table.end()) throw CompressionError("unknown codec: " + name);
    return it->second;
}

template <class Table>
std::vector<std::string> names(const Table& table) {
    std::vector<std::string> result;
    for (const auto& entry : table) result.push_back(entry.first);
    return result;
}

}  // namespace

std::unique_ptr<SerializableCompressorEncoder> SerializableCompressorEncoderFactory::create(
    const CodecSettings& settings) {
    return find(encoders(), settings.codec)(settings);
}

void SerializableCompressorEncoderFactory::registerCodec(const std::string& name,
                                                         Creator creator) {
    encoders()[name] = std::move(creator);
}

bool SerializableCompressorEncoderFactory::isRegistered(const std::string& name) {
    return encoders().count(name) != 0;
}

std::vector<std::string> SerializableCompressorEncoderFactory::codecNames() {
    return names(encoders());
}

std::unique_ptr<SerializableCompressorDecoder> SerializableCompressorDecoderFactory::create(
    const std::string& name) {
    return find(decoders(), name)();
}

void SerializableCompressorDecoderFactory::registerCodec(const std::string& name,
                                                         Creator creator) {
    decoders()[name] = std::move(creator);
}

bool SerializableCompressorDecoderFactory::isRegistered(const std::string& name) {
    return decoders().count(name) != 0;
}

std::vector<std::string> SerializableCompressorDecoderFactory::codecNames() {
    return names(decoders());
}

}  // namespace io
}  // namespace eod
}  // namespace tq
