#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>

#include <eod/eod.h>

#include "recordtesting.h"

// The largest single allocation made by this program since the last reset: proves that a
// forged length is checked before memory is sized by it.
static std::size_t largest_allocation = 0;

void* operator new(std::size_t size) {
    if (size > largest_allocation) largest_allocation = size;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

TEST(CompressedSerializable, Bytes) {
    const CompressedSerializable c({0xA1, 0xB2, 0xC3});
    EXPECT_EQ(c.objectID(), 95);
    EXPECT_EQ(c.numDataBytes(), 7u);
    EXPECT_EQ(encode(c), (Bytes{0x5F, 0x00, 0x07, 0x00, 0x00, 0x00, 0x03, 0xA1, 0xB2, 0xC3}));
    EXPECT_EQ(encode(CompressedSerializable()), (Bytes{0x5F, 0x00, 0x04, 0, 0, 0, 0}));
    EXPECT_EQ(Bytes(c.begin(), c.end()), (Bytes{0xA1, 0xB2, 0xC3}));
}

TEST(CompressedSerializable, RoundTripThroughTheFactory) {
    Bytes payload(70000);
    for (std::size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<unsigned char>(i);
    const Bytes bytes = encode(CompressedSerializable(payload));
    EXPECT_EQ(bytes.size(), 7u + 4u + payload.size());
    int read_pos = 0;
    const auto back = boost::dynamic_pointer_cast<CompressedSerializable>(
        SerializableFactory::newObject(bytes, read_pos));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->payload(), payload);
    const boost::shared_ptr<CompressedSerializable> cloned(back->clone());
    EXPECT_EQ(encode(*cloned), bytes);
}

TEST(CompressedSerializable, AllocationTrackingWorks) {
    largest_allocation = 0;
    const std::vector<unsigned char> v(4096);
    EXPECT_GE(largest_allocation, v.size());
}

TEST(CompressedSerializable, LengthBeyondTheData) {
    for (const Bytes& length : {Bytes{0, 0, 0, 10}, Bytes{0xFF, 0xFF, 0xFF, 0xFF}}) {
        SCOPED_TRACE(int(length[0]));
        const Bytes bytes = concat({{0x5F, 0x00, 0x08}, length, {1, 2, 3, 4}});
        CompressedSerializable c({9});
        int read_pos = 0;
        largest_allocation = 0;
        EXPECT_EQ(serializableError([&] { c.unSerialize(bytes, read_pos); }),
                  "data_size in header exceeds amount of data in buffer");
        EXPECT_LT(largest_allocation, 1024u);
        EXPECT_EQ(read_pos, 0);
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
        EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
        EXPECT_LT(largest_allocation, 1024u);
    }
}

TEST(CompressedSerializable, HugeRecordFromAStreamGrowsWithTheBytesRead) {
    // 4 GiB announced in the record header, a few bytes present.
    std::istringstream s(std::string("\x5F\xFF\xFF\xFF\xFF\xFF\xFF\x00\x00\x00\x01\x07", 12));
    largest_allocation = 0;
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(s, status));
    EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
    EXPECT_LE(largest_allocation, 2u << 20);
}

TEST(CompressedSerializable, Text) {
    const CompressedSerializable c({1, 2, 3});
    EXPECT_EQ(headerLine(c), "PAYLOAD_BYTES");
    EXPECT_EQ(valueLine(c), "3");
}

TEST(CompressedSerializableToken, Bytes) {
    CompressedSerializableToken t;
    EXPECT_EQ(t.streamID(), CompressedSerializableToken::INVALID_STREAM_ID);
    EXPECT_EQ(t.streamID(), -1);
    EXPECT_EQ(encode(t), (Bytes{0x60, 0x00, 0x06, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}));
    t.setStreamID(0x102);
    EXPECT_EQ(encode(t), (Bytes{0x60, 0x00, 0x06, 0x01, 0x00, 0x00, 0x01, 0x02, 0x00}));
    int read_pos = 0;
    const Bytes bytes = encode(t);
    const auto back = boost::dynamic_pointer_cast<CompressedSerializableToken>(
        SerializableFactory::newObject(bytes, read_pos));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->streamID(), 0x102);
}

TEST(CompressedSerializableToken, SeveralInOneParent) {
    EngineOutputData frame;
    frame.addSubObject(Ptr(new CompressedSerializableToken(1)));
    frame.addSubObject(Ptr(new CompressedSerializableToken(2)));
    EXPECT_EQ(frame.numSubObjects(CompressedSerializableToken::THIS_OBJECT_ID), 2);
    EXPECT_EQ(headerLine(frame), "FRAME_NUM\tSTREAM_ID\tSTREAM_ID");
    EXPECT_EQ(valueLine(frame), "0\t1\t2");
}

}  // namespace
