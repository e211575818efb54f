// The serial frame rules on bytes alone: exact frames out, datagrams and CRC errors back.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <eod/io/serialframecodec.h>

using tq::eod::io::SerialFrameCodec;
using tq::eod::io::SerialFrameDecoder;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

// What the decoder reports over line: each datagram's payload, "CRC" for each bad frame.
std::vector<std::string> decodeAll(const Bytes& line) {
    std::vector<std::string> found;
    SerialFrameDecoder decoder;
    for (unsigned char byte : line) {
        const SerialFrameDecoder::Event e = decoder.push(byte);
        if (e == SerialFrameDecoder::DATAGRAM) {
            found.emplace_back(decoder.payload().begin(), decoder.payload().end());
        } else if (e == SerialFrameDecoder::CRC_ERROR) {
            found.emplace_back("CRC");
        }
    }
    return found;
}

Bytes text(const std::string& s) { return Bytes(s.begin(), s.end()); }

}  // namespace

TEST(SerialFrameCodec, FramesAreMarkedStuffedAndCarryTheirCrc) {
    EXPECT_EQ(SerialFrameCodec::crc(text("123456789")), 0x31C3);
    EXPECT_EQ(SerialFrameCodec::frame(Bytes{}), (Bytes{0xAA, 0x55, 0x00, 0x00, 0xAA, 0x55}));
    const Bytes payload{0x01, 0xAA, 0x55};
    const unsigned short crc = SerialFrameCodec::crc(payload);
    Bytes crc_wire;
    for (unsigned char b : {static_cast<unsigned char>(crc >> 8), static_cast<unsigned char>(crc)}) {
        crc_wire.push_back(b);
        if (b == 0xAA) crc_wire.push_back(0x00);
    }
    EXPECT_EQ(SerialFrameCodec::frame(payload),
              concat({{0xAA, 0x55, 0x01, 0xAA, 0x00, 0x55}, crc_wire, {0xAA, 0x55}}));
    EXPECT_FALSE(SerialFrameCodec::hasValidCrc(Bytes{0x00}));
    EXPECT_TRUE(SerialFrameCodec::hasValidCrc(Bytes{0x00, 0x00}));
}

TEST(SerialFrameDecoder, FindsWhatAReceiverFinds) {
    const Bytes a = SerialFrameCodec::frame(text("a\xAA" "U"));
    const Bytes b = SerialFrameCodec::frame(text("bb"));
    Bytes corrupt = SerialFrameCodec::frame(text("cc"));
    corrupt[2] ^= 0x01;
    struct Case {
        const char* name;
        Bytes line;
        std::vector<std::string> expected;
    } cases[] = {
        {"two frames back to back", concat({a, b}), {"a\xAA" "U", "bb"}},
        {"noise before a frame", concat({{0x00, 0xAA, 0x13, 0x55}, b}), {"bb"}},
        // The byte after 0xAA is consumed unexamined, so 0xAA 0xAA 0x55 is no marker: the
        // first frame's end marker starts a frame that the next start marker leaves empty.
        {"no marker in AA AA 55", concat({{0xAA}, b, b}), {"bb"}},
        {"a bad CRC costs one frame", concat({corrupt, b}), {"CRC", "bb"}},
        {"one byte cannot hold a CRC", concat({{0xAA, 0x55, 0x07, 0xAA, 0x55}, b}), {"CRC", "bb"}},
        {"cut short", Bytes(a.begin(), a.end() - 1), {}},
        {"empty payload", SerialFrameCodec::frame(Bytes{}), {""}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(decodeAll(c.line), c.expected);
    }
}
