// The decoder of one codec (EOD_FUZZ_CODEC, one target per codec) over fuzzed bytes, given
// in one call and again in chunks whose sizes cycle through a few values from where the
// first byte says. Only library errors may leave the decoder; every record it yields must
// behave like any other record.

#include <eod/io/compress/serializablecompressorfactory.h>

#include <cstddef>
#include <cstdint>

#include "fuzz/fuzzing.h"

using tq::eod::Serializable;
using tq::eod::io::DecoderData;
using tq::eod::io::SerializableCompressorDecoder;
using tq::eod::io::SerializableCompressorDecoderFactory;

namespace {

const unsigned int kChunkSizes[] = {1, 2, 3, 5, 13, 64, 1024, 65536};
const std::size_t kNumChunkSizes = sizeof kChunkSizes / sizeof *kChunkSizes;

void drain(SerializableCompressorDecoder& decoder) {
    for (;;) {
        unsigned int status = 0;
        const DecoderData item = decoder.getNextWithStatus(status);
        if (status & Serializable::STATUS_NOT_ENOUGH_DATA) return;
        if (item.record) eodfuzz::checkUsable(*item.record, true);
    }
}

void decodeInChunks(const std::uint8_t* data, std::size_t size, std::size_t first_chunk) {
    auto decoder = SerializableCompressorDecoderFactory::create(EOD_FUZZ_CODEC);
    std::size_t k = first_chunk;
    for (std::size_t pos = 0; pos < size;) {
        const std::size_t n = std::min<std::size_t>(kChunkSizes[k++ % kNumChunkSizes], size - pos);
        eodfuzz::allowingLibraryErrors(
            [&] { decoder->decode(data + pos, static_cast<unsigned int>(n)); });
        drain(*decoder);
        pos += n;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    auto decoder = SerializableCompressorDecoderFactory::create(EOD_FUZZ_CODEC);
    eodfuzz::allowingLibraryErrors(
        [&] { decoder->decode(data + 1, static_cast<unsigned int>(size - 1)); });
    drain(*decoder);
    decodeInChunks(data + 1, size - 1, data[0]);
    return 0;
}
