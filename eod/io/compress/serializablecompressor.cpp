#include <eod/io/compress/serializablecompressor.h>
#include <eod/io/compress/serializablecompressorfactory.h>

#include <utility>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

SerializableCompressor::SerializableCompressor(const CodecSettings& settings)
    : _encoder(SerializableCompressorEncoderFactory::create(settings)) {}

SerializableCompressor::SerializableCompressor(
    std::unique_ptr<SerializableCompressorEncoder> encoder)
    : _encoder(std::move(encoder)) {
    EOD_REQUIRE(_encoder != nullptr, "no encoder provided");
}

void SerializableCompressor::compress(const Serializable& record, unsigned int tag) {
    _encoder->encode(record, tag, _bytes);
}

void SerializableCompressor::flush() { _encoder->flush(_bytes); }

boost::shared_ptr<CompressedSerializable> SerializableCompressor::getNext() {
    if (_bytes.empty()) return boost::shared_ptr<CompressedSerializable>();
    boost::shared_ptr<CompressedSerializable> record(new CompressedSerializable(std::move(_bytes)));
    _bytes.clear();
    return record;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
