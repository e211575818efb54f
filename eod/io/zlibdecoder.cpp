#include <eod/io/zlibdecoder.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <zlib.h>

#include <utility>

#include "eod/bytecodec.h"
#include "eod/usageerror.h"

namespace tq {
namespace eod {
namespace io {

ZLibDecoder::ZLibDecoder()
    : ZLibCodec<SerializableCompressorDecoder>(ZLibCodecImpl::newInflater(MAX_INFLATE_STEP)) {}

ZLibDecoder::~ZLibDecoder() = default;

void ZLibDecoder::decode(const unsigned char* data, unsigned int length) {
    EOD_REQUIRE(data != nullptr || length == 0, "data is NULL");
    std::string error;
    std::string record_error;
    int rc = impl().write(data, length);
    for (;;) {
        const bool more = rc == Z_OK && impl().outputFull();
        impl().takeOutput(_pending);
        if (!parsePending(error, record_error)) resetAndThrow(error);
        if (rc == Z_STREAM_END) {
            // Another deflater finished its stream; what follows starts a new one.
            rc = impl().reset();
            if (rc == Z_OK) rc = impl().resume();
            continue;
        }
        if (rc != Z_OK) {
            const char* message = impl().errorMessage();
            resetAndThrow("ZLibDecoder::decode() - inflate failed with error code " +
                          std::to_string(rc) + (message ? std::string(": ") + message : ""));
        }
        if (!more) break;
        rc = impl().resume();
    }
    if (!record_error.empty()) throw SerializableError(record_error);
}

bool ZLibDecoder::parsePending(std::string& error, std::string& record_error) {
    std::size_t pos = 0;
    while (_pending.size() - pos >= FRAME_HEADER_BYTES) {
        const unsigned char* header = _pending.data() + pos;
        const unsigned int tag = detail::loadU32LE(header);
        const std::uint32_t crc = detail::loadU32LE(header + 4);
        const std::uint32_t length = detail::loadU32LE(header + 8);
        // Checked before waiting for the bytes, so a forged length cannot make the decoder
        // hoard input for a record it would never accept.
        if (length > MAX_RECORD_LENGTH) {
            error = "ZLibDecoder::decode() - record length exceeds the maximum";
            return false;
        }
        if (_pending.size() - pos - FRAME_HEADER_BYTES < length) break;
        const unsigned char* record = header + FRAME_HEADER_BYTES;
        if (ZLibCodecImpl::crc(record, length) != crc) {
            error = "ZLibDecoder::decode() - CRC mismatch";
            return false;
        }
        QueuedItem item{DecoderData(), 0};
        item.data.tag = tag;
        bool rebuilt = true;
        if (length > 0) {
            // A copy of exactly the framed bytes, so a record whose own header says more
            // cannot read into the next frame.
            _record.assign(record, record + length);
            int read_pos = 0;
            try {
                item.data.record = SerializableFactory::newObject(_record, read_pos);
                if (static_cast<std::uint32_t>(read_pos) != length) {
                    throw SerializableError(
                        "ZLibDecoder::decode() - record does not fill its frame");
                }
                if (!item.data.record) item.status = Serializable::STATUS_UNKNOWN_OBJECT_ID;
            } catch (const SerializableError& e) {
                if (record_error.empty()) record_error = e.what();
                rebuilt = false;
            }
        }
        if (rebuilt) _queue.push_back(std::move(item));
        pos += FRAME_HEADER_BYTES + length;
    }
    _pending.erase(_pending.begin(), _pending.begin() + static_cast<std::ptrdiff_t>(pos));
    // Not held on to after an unusually long record.
    if (_record.capacity() > MAX_INFLATE_STEP) std::vector<unsigned char>().swap(_record);
    return true;
}

void ZLibDecoder::resetAndThrow(const std::string& error) {
    impl().dropInput();
    impl().reset();
    // Released rather than cleared: it may have held most of a very long record.
    std::vector<unsigned char>().swap(_pending);
    throw SerializableError(error);
}

DecoderData ZLibDecoder::getNextWithStatus(unsigned int& status) {
    if (_queue.empty()) {
        status |= Serializable::STATUS_NOT_ENOUGH_DATA;
        return DecoderData();
    }
    const QueuedItem item = std::move(_queue.front());
    _queue.pop_front();
    status |= item.status;
    return item.data;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
