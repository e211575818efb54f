#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/compress/serializabledecompressor.h>

#include <utility>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

SerializableDecompressor::SerializableDecompressor(const std::string& codec)
    : _decoder(SerializableCompressorDecoderFactory::create(codec)) {}

SerializableDecompressor::SerializableDecompressor(
    std::unique_ptr<SerializableCompressorDecoder> decoder)
    : _decoder(std::move(decoder)) {
    EOD_REQUIRE(_decoder != nullptr, "no decoder provided");
}

void SerializableDecompressor::decompress(const CompressedSerializable& record) {
    const std::vector<unsigned char>& payload = record.payload();
    _decoder->decode(payload.data(), static_cast<unsigned int>(payload.size()));
}

DecoderData SerializableDecompressor::getNextWithStatus(unsigned int& status) {
    return _decoder->getNextWithStatus(status);
}

boost::shared_ptr<Serializable> SerializableDecompressor::getNext() {
    unsigned int status = 0;
    for (;;) {
        DecoderData item = _decoder->getNextWithStatus(status);
        if (status & Serializable::STATUS_NOT_ENOUGH_DATA) return boost::shared_ptr<Serializable>();
        // Items without a record (unknown ids, empty frames) have nothing to give.
        if (item.record) return item.record;
        status = 0;
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
