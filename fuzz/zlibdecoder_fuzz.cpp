// ZLibDecoder::decode over fuzzed input. When bit 0 of the first byte is set, the rest is
// the plain stream of framed records, which the target deflates as the encoder does (after
// fixing the CRC-32 of every complete frame when bit 1 is set, so that most records reach
// the factory); otherwise the rest goes in as compressed bytes as it stands.
//
// The compressed bytes are decoded twice: in one call, and in chunks whose sizes cycle
// through 1 to 1024 bytes starting where bits 2 to 4 say. Where the single call meets no
// error, the chunks must give the same items and no error either; otherwise its items must
// begin the chunked reading, which may go on past the error (after a reset the chunks that
// follow are read as a new stream).

#include <eod/io/zlibdecoder.h>
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "eod/detail/bytecodec.h"
#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::Serializable;
using tq::eod::io::DecoderData;
using tq::eod::io::ZLibDecoder;

namespace {

const unsigned int kChunkSizes[] = {1, 2, 3, 5, 7, 13, 32, 1024};
const std::size_t kNumChunkSizes = sizeof kChunkSizes / sizeof *kChunkSizes;

struct Item {
    unsigned int tag;
    unsigned int status;
    Bytes record;  // its fingerprint; empty for a null record

    bool operator==(const Item& o) const {
        return tag == o.tag && status == o.status && record == o.record;
    }
};

struct Reading {
    std::vector<Item> items;
    bool failed = false;
};

// Drains the queue. Taking items goes on decoding input the decoder held back, so it may
// raise the decoder's errors too; the items after such an error are still taken.
void takeItems(ZLibDecoder& decoder, Reading& reading) {
    for (;;) {
        unsigned int status = 0;
        DecoderData data;
        if (!eodfuzz::allowingLibraryErrors([&] { data = decoder.getNextWithStatus(status); })) {
            reading.failed = true;
            continue;
        }
        if (status & Serializable::STATUS_NOT_ENOUGH_DATA) return;
        Item item{data.tag, status, Bytes()};
        if (data.record) {
            eodfuzz::checkUsable(*data.record, true);
            item.record = eodfuzz::fingerprint(*data.record);
        }
        reading.items.push_back(item);
    }
}

// In one call, or in chunks of the cycling sizes from kChunkSizes[first] on.
Reading decode(const Bytes& compressed, bool whole, std::size_t first) {
    ZLibDecoder decoder;
    Reading reading;
    std::size_t i = first;
    for (std::size_t done = 0; done < compressed.size();) {
        const std::size_t n = whole ? compressed.size()
                                    : std::min<std::size_t>(kChunkSizes[i++ % kNumChunkSizes],
                                                            compressed.size() - done);
        if (!eodfuzz::allowingLibraryErrors(
                [&] { decoder.decode(compressed.data() + done, static_cast<unsigned int>(n)); })) {
            reading.failed = true;
        }
        takeItems(decoder, reading);
        // The queue stays bounded however many frames the bytes hold.
        EOD_FUZZ_EXPECT(decoder.numHeldBytes() == 0);
        done += n;
    }
    // A CRC mismatch drops bytes without an exception; it ends the comparison the same way.
    if (decoder.numCrcMismatches() > 0) reading.failed = true;
    return reading;
}

// Gives every complete frame the CRC-32 of its record bytes.
void fixCrcs(Bytes& plain) {
    std::size_t pos = 0;
    while (plain.size() - pos >= ZLibDecoder::FRAME_HEADER_BYTES) {
        unsigned char* header = plain.data() + pos;
        const std::uint32_t length = tq::eod::detail::loadU32LE(header + 8);
        const std::size_t available = plain.size() - pos - ZLibDecoder::FRAME_HEADER_BYTES;
        if (length > available) return;
        const unsigned char* record = header + ZLibDecoder::FRAME_HEADER_BYTES;
        const uLong crc = ::crc32(::crc32(0, nullptr, 0), record, length);
        for (int b = 0; b < 4; ++b) header[4 + b] = static_cast<unsigned char>(crc >> (8 * b));
        pos += ZLibDecoder::FRAME_HEADER_BYTES + length;
    }
}

// A raw deflate stream as the encoder writes it with this zlib (which refuses the 256-byte
// window for raw streams, so the window is 512 bytes), ending on a full flush.
Bytes deflateAsTheEncoder(const Bytes& plain) {
    z_stream z{};
    EOD_FUZZ_EXPECT(
        ::deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -9, 8, Z_DEFAULT_STRATEGY) == Z_OK);
    Bytes out(::deflateBound(&z, plain.size()) + 64);
    z.next_in = const_cast<Bytes::value_type*>(plain.data());
    z.avail_in = static_cast<uInt>(plain.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(out.size());
    EOD_FUZZ_EXPECT(::deflate(&z, Z_FULL_FLUSH) == Z_OK && z.avail_in == 0);
    out.resize(z.total_out);
    ::deflateEnd(&z);
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned char mode = data[0];
    Bytes bytes(data + 1, data + size);
    if (mode & 1) {
        if (mode & 2) fixCrcs(bytes);
        bytes = deflateAsTheEncoder(bytes);
    }
    const Reading whole = decode(bytes, true, 0);
    const Reading chunked = decode(bytes, false, (mode >> 2) & 7);
    EOD_FUZZ_EXPECT(chunked.items.size() >= whole.items.size());
    EOD_FUZZ_EXPECT(std::equal(whole.items.begin(), whole.items.end(), chunked.items.begin()));
    if (!whole.failed) {
        EOD_FUZZ_EXPECT(!chunked.failed && chunked.items.size() == whole.items.size());
    }
    return 0;
}
