#include <eod/io/zlibdecoder.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <zlib.h>

#include <utility>

#include "eod/detail/bytecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

ZLibDecoder::ZLibDecoder()
    : ZLibCodec<SerializableCompressorDecoder>(ZLibCodecImpl::newInflater(MAX_INFLATE_STEP)) {}

ZLibDecoder::~ZLibDecoder() = default;

void ZLibDecoder::decode(const unsigned char* data, unsigned int length) {
    EOD_REQUIRE(data != nullptr || length == 0, "data is NULL");
    std::string record_error;
    if (!_stopped) {
        run(impl().write(data, length), record_error);
    } else {
        if (length > 0) {
            // After the bytes kept back, which zlib's input points into.
            _held.erase(_held.begin(), _held.end() - impl().inputLeft());
            _held.insert(_held.end(), data, data + length);
            impl().moveInput(_held.data(), static_cast<unsigned int>(_held.size()));
        }
        if (_queue.size() >= MAX_QUEUED_ITEMS) return;
        run(impl().resume(), record_error);
    }
    if (!record_error.empty()) throw SerializableError(record_error);
}

void ZLibDecoder::run(int rc, std::string& record_error) {
    for (;;) {
        const bool more = rc == Z_OK && impl().outputFull();
        impl().takeOutput(_pending);
        switch (parsePending(record_error)) {
            case Parse::ok:
                break;
            case Parse::crc_mismatch:
                ++_crc_mismatches;
                dropAll();
                return;
            case Parse::too_long:
                resetAndThrow("ZLibDecoder::decode() - record length exceeds the maximum");
        }
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
        if (_queue.size() >= MAX_QUEUED_ITEMS) {
            keepInput();
            _stopped = true;
            return;
        }
        rc = impl().resume();
    }
    _stopped = false;
    // Released: it may have held a large input.
    std::vector<unsigned char>().swap(_held);
}

void ZLibDecoder::keepInput() {
    std::vector<unsigned char> rest(impl().input(), impl().input() + impl().inputLeft());
    _held.swap(rest);
    impl().moveInput(_held.data(), static_cast<unsigned int>(_held.size()));
}

std::size_t ZLibDecoder::numHeldBytes() const { return _stopped ? impl().inputLeft() : 0; }

ZLibDecoder::Parse ZLibDecoder::parsePending(std::string& record_error) {
    std::size_t pos = 0;
    while (_pending.size() - pos >= FRAME_HEADER_BYTES) {
        const unsigned char* header = _pending.data() + pos;
        const unsigned int tag = detail::loadU32LE(header);
        const std::uint32_t crc = detail::loadU32LE(header + 4);
        const std::uint32_t length = detail::loadU32LE(header + 8);
        // Checked before waiting for the bytes, so a forged length cannot make the decoder
        // hoard input for a record it would never accept.
        if (length > _max_record_length) return Parse::too_long;
        if (_pending.size() - pos - FRAME_HEADER_BYTES < length) break;
        const unsigned char* record = header + FRAME_HEADER_BYTES;
        if (ZLibCodecImpl::crc(record, length) != crc) return Parse::crc_mismatch;
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
    return Parse::ok;
}

void ZLibDecoder::dropAll() {
    impl().dropInput();
    impl().reset();
    // Released rather than cleared: they may have held most of a very long record.
    std::vector<unsigned char>().swap(_pending);
    std::vector<unsigned char>().swap(_held);
    _stopped = false;
}

void ZLibDecoder::resetAndThrow(const std::string& error) {
    dropAll();
    throw SerializableError(error);
}

DecoderData ZLibDecoder::getNextWithStatus(unsigned int& status) {
    if (_queue.empty() && _stopped) {
        std::string record_error;
        run(impl().resume(), record_error);
        if (!record_error.empty()) throw SerializableError(record_error);
    }
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
