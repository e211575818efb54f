#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include <utility>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/framedcodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

// The record byte codec lives one namespace up, hidden by this one.
using ::tq::eod::detail::loadU32LE;
using ::tq::eod::detail::storeU32LE;

FramedEncoder::FramedEncoder(std::string name, std::unique_ptr<ByteStreamCompressor> stream)
    : _name(std::move(name)), _stream(std::move(stream)) {}

void FramedEncoder::encode(const Serializable& record, unsigned int tag,
                           std::vector<unsigned char>& out) {
    _frame.assign(FRAME_HEADER_BYTES, 0);
    record.serialize(_frame);
    const std::size_t length = _frame.size() - FRAME_HEADER_BYTES;
    if (length > MAX_RECORD_LENGTH) {
        throw SerializableError(_name + "::encode() - record longer than MAX_RECORD_LENGTH");
    }
    unsigned char* header = _frame.data();
    storeU32LE(header, tag);
    storeU32LE(header + 4, ZLibCodecImpl::crc(header + FRAME_HEADER_BYTES, length));
    storeU32LE(header + 8, static_cast<std::uint32_t>(length));
    _stream->write(_frame.data(), _frame.size(), out);
}

void FramedEncoder::flush(std::vector<unsigned char>& out) { _stream->flush(out); }

FramedDecoder::FramedDecoder(std::string name, std::unique_ptr<ByteStreamDecompressor> stream)
    : _name(std::move(name)), _stream(std::move(stream)) {}

void FramedDecoder::decode(const unsigned char* data, unsigned int length) {
    EOD_REQUIRE(data != nullptr || length == 0, "data is NULL");
    std::string error;
    std::string record_error;
    try {
        _stream->decompress(data, length, [&](const unsigned char* p, std::size_t n) {
            _pending.insert(_pending.end(), p, p + n);
            if (!parsePending(error, record_error)) throw SerializableError(error);
        });
    } catch (const SerializableError&) {
        _stream->reset();
        std::vector<unsigned char>().swap(_pending);
        throw;
    }
    if (!record_error.empty()) throw SerializableError(record_error);
}

bool FramedDecoder::parsePending(std::string& error, std::string& record_error) {
    std::size_t pos = 0;
    while (_pending.size() - pos >= FramedEncoder::FRAME_HEADER_BYTES) {
        const unsigned char* header = _pending.data() + pos;
        const std::uint32_t length = loadU32LE(header + 8);
        if (length > FramedEncoder::MAX_RECORD_LENGTH) {
            error = _name + "::decode() - record length exceeds the maximum";
            return false;
        }
        if (_pending.size() - pos - FramedEncoder::FRAME_HEADER_BYTES < length) break;
        const unsigned char* record = header + FramedEncoder::FRAME_HEADER_BYTES;
        if (ZLibCodecImpl::crc(record, length) != loadU32LE(header + 4)) {
            error = _name + "::decode() - CRC mismatch";
            return false;
        }
        QueuedItem item{DecoderData(), 0};
        item.data.tag = loadU32LE(header);
        bool rebuilt = true;
        if (length > 0) {
            _record.assign(record, record + length);
            int read_pos = 0;
            try {
                item.data.record = SerializableFactory::newObject(_record, read_pos);
                if (static_cast<std::uint32_t>(read_pos) != length) {
                    throw SerializableError(_name + "::decode() - record does not fill its frame");
                }
                if (!item.data.record) item.status = Serializable::STATUS_UNKNOWN_OBJECT_ID;
            } catch (const SerializableError& e) {
                if (record_error.empty()) record_error = e.what();
                rebuilt = false;
            }
        }
        if (rebuilt) _queue.push_back(std::move(item));
        pos += FramedEncoder::FRAME_HEADER_BYTES + length;
    }
    _pending.erase(_pending.begin(), _pending.begin() + static_cast<std::ptrdiff_t>(pos));
    if (_record.capacity() > ByteStreamDecompressor::MAX_STEP) {
        std::vector<unsigned char>().swap(_record);
    }
    return true;
}

DecoderData FramedDecoder::getNextWithStatus(unsigned int& status) {
    if (_queue.empty()) {
        status |= Serializable::STATUS_NOT_ENOUGH_DATA;
        return DecoderData();
    }
    const QueuedItem item = std::move(_queue.front());
    _queue.pop_front();
    status |= item.status;
    return item.data;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
