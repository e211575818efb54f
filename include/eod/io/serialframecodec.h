#ifndef EOD_IO_SERIALFRAMECODEC_H
#define EOD_IO_SERIALFRAMECODEC_H

// The frame rules of the serial line, apart from the port that moves the bytes, so that the
// port, its tests and anything that reads a captured line share one definition.
//
// Frame on the wire: 0xAA 0x55, the payload, the CRC-16 of the payload (high byte first),
// 0xAA 0x55. Every 0xAA of the payload or of the CRC is sent as 0xAA 0x00, so a marker never
// appears inside a frame. The CRC is CRC-16/XMODEM: polynomial 0x1021, initial value 0, no
// reflection, no final XOR ("123456789" gives 0x31C3).
//
// Reading is two phases, each fed one byte at a time: MarkerSearch finds a start marker,
// then Unstuffer collects the frame's bytes up to the end marker. SerialFrameDecoder chains
// them into whole datagrams.

#include <vector>

namespace tq {
namespace eod {
namespace io {

class SerialFrameCodec {
public:
    static constexpr unsigned char MARKER_FIRST = 0xAA;
    static constexpr unsigned char MARKER_SECOND = 0x55;
    static constexpr unsigned char STUFFING = 0x00;

    static unsigned short crc(const std::vector<unsigned char>& data);
    // True when data, whose last two bytes are the CRC of the rest, has a CRC of 0. Data
    // shorter than two bytes cannot hold a CRC and is never valid.
    static bool hasValidCrc(const std::vector<unsigned char>& data);
    // The whole frame that carries payload: markers, stuffed payload and stuffed CRC.
    static std::vector<unsigned char> frame(const std::vector<unsigned char>& payload);

    // Finds a start marker. The byte after a 0xAA is consumed unexamined, as in a stuffed
    // pair, so 0xAA 0xAA 0x55 is not a marker.
    class MarkerSearch {
    public:
        // True when byte completes a marker; the search then starts over.
        bool push(unsigned char byte);

    private:
        bool _after_first = false;
    };

    // Collects a frame's bytes without stuffing up to the end marker (not stored).
    class Unstuffer {
    public:
        // Appends what byte adds to out; true when byte completes the end marker.
        bool push(unsigned char byte, std::vector<unsigned char>& out);

    private:
        bool _after_first = false;
    };
};

// Datagrams from bytes as a receiver finds them: search a start marker, collect up to the
// end marker (an empty frame is an end marker followed at once by the next start marker, and
// collecting starts again), then check the CRC. A bad frame costs only itself.
class SerialFrameDecoder {
public:
    enum Event { NEED_MORE, DATAGRAM, CRC_ERROR };

    // Feeds one byte. After DATAGRAM, payload() holds the datagram until the next push.
    Event push(unsigned char byte);
    const std::vector<unsigned char>& payload() const { return _frame; }

private:
    bool _in_frame = false;
    SerialFrameCodec::MarkerSearch _search;
    SerialFrameCodec::Unstuffer _body;
    std::vector<unsigned char> _frame;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
