#include <eod/io/serialframecodec.h>

#include <boost/crc.hpp>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace io {

namespace {

using Bytes = std::vector<unsigned char>;
using Crc16 = boost::crc_optimal<16, 0x1021, 0, 0, false, false>;

void appendStuffed(Bytes& frame, unsigned char byte) {
    frame.push_back(byte);
    if (byte == SerialFrameCodec::MARKER_FIRST) {
        frame.push_back(SerialFrameCodec::STUFFING);
    }
}

}  // namespace

unsigned short SerialFrameCodec::crc(const Bytes& data) {
    Crc16 crc;
    crc.process_bytes(data.data(), data.size());
    return crc.checksum();
}

bool SerialFrameCodec::hasValidCrc(const Bytes& data) { return data.size() >= 2 && crc(data) == 0; }

Bytes SerialFrameCodec::frame(const Bytes& payload) {
    Bytes crc_bytes;
    eod::detail::appendNumber(crc_bytes, crc(payload));
    Bytes frame{MARKER_FIRST, MARKER_SECOND};
    frame.reserve(2 * (payload.size() + crc_bytes.size()) + 4);
    for (unsigned char byte : payload) {
        appendStuffed(frame, byte);
    }
    for (unsigned char byte : crc_bytes) {
        appendStuffed(frame, byte);
    }
    frame.push_back(MARKER_FIRST);
    frame.push_back(MARKER_SECOND);
    return frame;
}

bool SerialFrameCodec::MarkerSearch::push(unsigned char byte) {
    if (_after_first) {
        _after_first = false;
        return byte == MARKER_SECOND;
    }
    _after_first = byte == MARKER_FIRST;
    return false;
}

bool SerialFrameCodec::Unstuffer::push(unsigned char byte, Bytes& out) {
    if (!_after_first) {
        if (byte == MARKER_FIRST) {
            _after_first = true;
        } else {
            out.push_back(byte);
        }
        return false;
    }
    _after_first = false;
    if (byte == MARKER_SECOND) {
        return true;
    }
    // Any other byte after 0xAA is stuffing: the 0xAA is data and the stuffing is dropped.
    out.push_back(MARKER_FIRST);
    return false;
}

SerialFrameDecoder::Event SerialFrameDecoder::push(unsigned char byte) {
    if (!_in_frame) {
        if (_search.push(byte)) {
            _in_frame = true;
            _frame.clear();
        }
        return NEED_MORE;
    }
    if (!_body.push(byte, _frame) || _frame.empty()) {
        return NEED_MORE;
    }
    _in_frame = false;
    if (!SerialFrameCodec::hasValidCrc(_frame)) {
        _frame.clear();
        return CRC_ERROR;
    }
    _frame.resize(_frame.size() - 2);
    return DATAGRAM;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
