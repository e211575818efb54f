#include <eod/io/zlibencoder.h>
#include <eod/serializableerror.h>
#include <zlib.h>

#include <cstdint>
#include <string>

#include "eod/detail/bytecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

ZLibCodecImpl* newDeflater(int level, int maxPendingRecords) {
    EOD_REQUIRE(level == Z_DEFAULT_COMPRESSION || (level >= 0 && level <= 9),
                "level should be -1 or between 0 and 9");
    EOD_REQUIRE(maxPendingRecords >= 0, "maxPendingRecords is negative");
    return ZLibCodecImpl::newDeflater(level, static_cast<unsigned int>(maxPendingRecords));
}

}  // namespace

ZLibEncoder::ZLibEncoder(int level, int maxPendingRecords)
    : ZLibCodec<SerializableCompressorEncoder>(newDeflater(level, maxPendingRecords)) {}

ZLibEncoder::~ZLibEncoder() = default;

void ZLibEncoder::encode(const Serializable& record, unsigned int tag,
                         std::vector<unsigned char>& out) {
    // Header and record go to deflate in one piece: room for the header first, the record
    // after it, then the header filled in once the record's length and CRC are known.
    _frame.assign(FRAME_HEADER_BYTES, 0);
    record.serialize(_frame);
    const std::size_t length = _frame.size() - FRAME_HEADER_BYTES;
    // The frame's length field, and zlib's input count, hold 32 bits.
    if (_frame.size() > UINT32_MAX) {
        _frame.clear();
        throw SerializableError("ZLibEncoder::encode() - record longer than a frame can carry");
    }
    unsigned char* header = _frame.data();
    detail::storeU32LE(header, tag);
    detail::storeU32LE(header + 4, ZLibCodecImpl::crc(header + FRAME_HEADER_BYTES, length));
    detail::storeU32LE(header + 8, static_cast<std::uint32_t>(length));

    checkDeflate(impl().write(_frame.data(), static_cast<unsigned int>(_frame.size())), "encode");
    // Not held on to after an unusually long record (a frame of full-resolution images).
    if (_frame.capacity() > MAX_KEPT_FRAME_BYTES) std::vector<unsigned char>().swap(_frame);
    if (impl().hasOutput()) {
        impl().takeOutput(out);
        impl().setPendingRecords(0);
        return;
    }
    impl().setPendingRecords(impl().pendingRecords() + 1);
    if (impl().pendingRecords() > impl().maxPendingRecords()) flush(out);
}

void ZLibEncoder::flush(std::vector<unsigned char>& out) {
    checkDeflate(impl().flush(Z_FULL_FLUSH), "flush");
    impl().takeOutput(out);
    impl().setPendingRecords(0);
}

void ZLibEncoder::checkDeflate(int rc, const char* function) {
    if (rc == Z_OK) return;
    throw SerializableError(std::string("ZLibEncoder::") + function +
                            "() - deflate failed with error code " + std::to_string(rc));
}

}  // namespace io
}  // namespace eod
}  // namespace tq
