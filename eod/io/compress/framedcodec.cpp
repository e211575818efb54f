#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>

#include <utility>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/framedcodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

// The record byte codec lives one namespace up, hidden by this one.
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
    : _name(std::move(name)),
      _stream(std::move(stream)),
      _frames(_name, ByteStreamDecompressor::MAX_STEP) {}

void FramedDecoder::decode(const unsigned char* data, unsigned int length) {
    EOD_REQUIRE(data != nullptr || length == 0, "data is NULL");
    run(data, length);
}

void FramedDecoder::run(const unsigned char* data, std::size_t length) {
    std::string record_error;
    try {
        _stopped = !_stream->decompress(data, length, [&](const unsigned char* p, std::size_t n) {
            _frames.pending().insert(_frames.pending().end(), p, p + n);
            switch (_frames.parse(FramedEncoder::MAX_RECORD_LENGTH, record_error)) {
                case RecordFrameParser::Parse::ok:
                    break;
                case RecordFrameParser::Parse::crc_mismatch:
                    throw SerializableError(_name + "::decode() - CRC mismatch");
                case RecordFrameParser::Parse::too_long:
                    throw SerializableError(_name +
                                            "::decode() - record length exceeds the maximum");
            }
            return _frames.queue().size() < MAX_QUEUED_ITEMS;
        });
    } catch (const SerializableError&) {
        _stream->reset();
        _frames.dropPending();
        _stopped = false;
        throw;
    }
    if (!record_error.empty()) throw SerializableError(record_error);
}

DecoderData FramedDecoder::getNextWithStatus(unsigned int& status) {
    if (_frames.queue().empty() && _stopped) run(nullptr, 0);
    return _frames.queue().takeNext(status);
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
