#include <eod/io/zlibdecoder.h>
#include <eod/serializableerror.h>
#include <zlib.h>

#include <utility>

#include "eod/detail/usageerror.h"
#include "eod/io/detail/recordframes.h"

namespace tq {
namespace eod {
namespace io {

class ZLibDecoder::Frames : public detail::RecordFrameParser {
    using RecordFrameParser::RecordFrameParser;
};

ZLibDecoder::ZLibDecoder()
    : ZLibCodec<SerializableCompressorDecoder>(ZLibCodecImpl::newInflater(MAX_INFLATE_STEP)),
      _frames(new Frames("ZLibDecoder", MAX_INFLATE_STEP)) {}

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
        if (_frames->queue().size() >= MAX_QUEUED_ITEMS) return;
        run(impl().resume(), record_error);
    }
    if (!record_error.empty()) throw SerializableError(record_error);
}

void ZLibDecoder::run(int rc, std::string& record_error) {
    for (;;) {
        const bool more = rc == Z_OK && impl().outputFull();
        impl().takeOutput(_frames->pending());
        switch (_frames->parse(_max_record_length, record_error)) {
            case detail::RecordFrameParser::Parse::ok:
                break;
            case detail::RecordFrameParser::Parse::crc_mismatch:
                ++_crc_mismatches;
                dropAll();
                return;
            case detail::RecordFrameParser::Parse::too_long:
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
        if (_frames->queue().size() >= MAX_QUEUED_ITEMS) {
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

std::size_t ZLibDecoder::numPendingBytes() const { return _frames->pending().size(); }

std::size_t ZLibDecoder::numHeldBytes() const { return _stopped ? impl().inputLeft() : 0; }

void ZLibDecoder::dropAll() {
    impl().dropInput();
    impl().reset();
    _frames->dropPending();
    std::vector<unsigned char>().swap(_held);
    _stopped = false;
}

void ZLibDecoder::resetAndThrow(const std::string& error) {
    dropAll();
    throw SerializableError(error);
}

DecoderData ZLibDecoder::getNextWithStatus(unsigned int& status) {
    if (_frames->queue().empty() && _stopped) {
        std::string record_error;
        run(impl().resume(), record_error);
        if (!record_error.empty()) throw SerializableError(record_error);
    }
    return _frames->queue().takeNext(status);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
