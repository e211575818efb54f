#include <gtest/gtest.h>

#include <sstream>

#include <eod/eod.h>
#include <eod/recordsize.h>

#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

struct HeaderCase {
    unsigned int data_size;
    Bytes header;
};

TEST(SerializableHeader, ShortFormBelow65535AndLongFormFrom65535On) {
    const HeaderCase cases[] = {
        {0, {100, 0x00, 0x00}},
        {1, {100, 0x00, 0x01}},
        {65534, {100, 0xFF, 0xFE}},
        {65535, {100, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFF}},
        {70000, {100, 0xFF, 0xFF, 0x00, 0x01, 0x11, 0x70}},
    };
    for (const HeaderCase& c : cases) {
        SCOPED_TRACE(c.data_size);
        Bytes written;
        Serializable::writeHeader(written, 100, c.data_size);
        EXPECT_EQ(written, c.header);
        EXPECT_EQ(Serializable::numHeaderBytes(c.data_size), c.header.size());
        EXPECT_EQ(Serializable::extendedHeaderSize(c.data_size), c.header.size() == 7);

        Bytes data(c.data_size);
        for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<unsigned char>(i * 7);
        const TestLeaf leaf(100, data);
        EXPECT_EQ(leaf.numTotalBytes(), c.header.size() + c.data_size);
        const Bytes bytes = encode(leaf);
        EXPECT_EQ(bytes, concat({c.header, data}));

        unsigned int size = 0;
        int p = 1;
        EXPECT_TRUE(Serializable::readDataSizeHeader(bytes, p, &size));
        EXPECT_EQ(size, c.data_size);
        EXPECT_EQ(p, static_cast<int>(c.header.size()));

        TestLeaf back(100, Bytes(c.data_size));
        int read_pos = 0;
        ASSERT_TRUE(back.unSerialize(bytes, read_pos));
        EXPECT_EQ(read_pos, static_cast<int>(bytes.size()));
        EXPECT_EQ(back.data(), data);
    }
    EXPECT_EQ(Serializable::minHeaderBytes(), 3u);
    EXPECT_EQ(Serializable::extendedHeaderSizeMagicCookie(), 65535u);
}

TEST(SerializableHeader, NestedRecordsEachTakeTheirOwnForm) {
    // A long composite holding a long leaf, a short leaf and a long composite whose only
    // leaf is exactly 65535 bytes.
    const Bytes big(70000, 0xB1), small(10, 0x5A), edge(65535, 0xED);
    TestComposite outer;
    outer.addSubObject(boost::shared_ptr<Serializable>(new TestLeaf(51, big)));
    outer.addSubObject(boost::shared_ptr<Serializable>(new TestLeaf(52, small)));
    const boost::shared_ptr<TestComposite> inner(new TestComposite);
    inner->addSubObject(boost::shared_ptr<Serializable>(new TestLeaf(53, edge)));
    outer.addSubObject(inner);

    const Bytes inner_bytes = recordBytes(110, concat({{1}, recordBytes(53, edge)}));
    const Bytes expected =
        recordBytes(110, concat({{3}, recordBytes(51, big), recordBytes(52, small), inner_bytes}));
    EXPECT_EQ(expected.size(), outer.numTotalBytes());
    EXPECT_EQ(encode(outer), expected);
    EXPECT_EQ(encode(*inner), inner_bytes);

    // A short parent: every header short.
    TestComposite short_parent;
    short_parent.addSubObject(boost::shared_ptr<Serializable>(new TestLeaf(52, small)));
    EXPECT_EQ(encode(short_parent), recordBytes(110, concat({{1}, recordBytes(52, small)})));
}

TEST(SerializableHeader, ReadDataSizeHeaderWantsTheWholeRecord) {
    // Short form announcing 2 bytes with only 1 present.
    Bytes b = {100, 0x00, 0x02, 0xAA};
    int p = 1;
    EXPECT_FALSE(Serializable::readDataSizeHeader(b, p, nullptr));
    b.push_back(0xBB);
    p = 1;
    EXPECT_TRUE(Serializable::readDataSizeHeader(b, p, nullptr));
    EXPECT_EQ(p, 3);
    // Extended cookie followed by 3 of the 4 size bytes.
    const Bytes extended = {100, 0xFF, 0xFF, 0x00, 0x00, 0x00};
    p = 1;
    EXPECT_FALSE(Serializable::readDataSizeHeader(extended, p, nullptr));
}

TEST(SerializableHeader, RecordSizeFromPrefixNeedsTheWholeHeaderOnly) {
    struct Case {
        Bytes prefix;
        bool known;
        std::size_t header_bytes;
        std::uint64_t total_bytes;
    };
    const Case cases[] = {
        {{}, false, 3, 0},
        {{9, 0x00}, false, 3, 0},
        {{9, 0x00, 0x00}, true, 3, 3},
        {{9, 0x12, 0x34}, true, 3, 3 + 0x1234},  // the data need not be there
        {{9, 0xFF, 0xFE}, true, 3, 3 + 65534},
        {{9, 0xFF, 0xFF, 0x00, 0x01, 0x00}, false, 7, 0},
        {{9, 0xFF, 0xFF, 0x00, 0x01, 0x00, 0x00}, true, 7, 7 + 65536},
        {{9, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xAA}, true, 7, 7 + 0xFFFFFFFFull},
    };
    for (const Case& c : cases) {
        const RecordSize size = recordSizeFromPrefix(c.prefix.data(), c.prefix.size());
        EXPECT_EQ(size.known, c.known) << c.prefix.size();
        EXPECT_EQ(size.header_bytes, c.header_bytes) << c.prefix.size();
        EXPECT_EQ(size.total_bytes, c.total_bytes) << c.prefix.size();
    }
}

TEST(SerializableSerialize, AppendsToWhatIsThereAndReservesOnce) {
    Bytes buffer = {0xEE};
    TestLeaf(100, {1, 2}).serialize(buffer);
    EXPECT_EQ(buffer, (Bytes{0xEE, 100, 0x00, 0x02, 1, 2}));

    TestComposite composite;
    for (int i = 0; i < 10; ++i) {
        composite.addSubObject(boost::shared_ptr<Serializable>(new TestLeaf(char(i), Bytes(30))));
    }
    Bytes fresh;
    composite.serialize(fresh);
    EXPECT_EQ(fresh.size(), composite.numTotalBytes());
    // The whole size is reserved before writing: the buffer never grew past it.
    EXPECT_EQ(fresh.capacity(), fresh.size());
}

TEST(SerializableSerialize, DisabledRecordThrowsAndLeavesTheBufferAlone) {
    TestLeaf leaf(100, {1, 2, 3});
    leaf.setEnabled(false);
    Bytes buffer = {9, 9};
    EXPECT_EQ(serializableError([&] { leaf.serialize(buffer); }),
              "Serializable::serialize() - trying to serialize invalid object.");
    EXPECT_EQ(buffer, (Bytes{9, 9}));
}

TEST(SerializableUnSerialize, IncompleteRecordReturnsFalseWithoutMoving) {
    const Bytes junk = {0x55, 0x66};
    const Bytes whole = concat({junk, encode(TestLeaf(100, {1, 2, 3, 4, 5}))});
    for (std::size_t n = 0; n < whole.size(); ++n) {
        SCOPED_TRACE(n);
        const Bytes prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
        TestLeaf leaf(100, Bytes(5));
        int read_pos = 2;
        EXPECT_FALSE(leaf.unSerialize(prefix, read_pos));
        EXPECT_EQ(read_pos, 2);

        unsigned int status = 0;
        leaf.unSerializeWithStatus(prefix, read_pos, status);
        EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
        EXPECT_EQ(read_pos, 2);
    }
    TestLeaf leaf(100, Bytes(5));
    int read_pos = 2;
    EXPECT_TRUE(leaf.unSerialize(whole, read_pos));
    EXPECT_EQ(read_pos, static_cast<int>(whole.size()));
    EXPECT_EQ(leaf.data(), (Bytes{1, 2, 3, 4, 5}));
}

TEST(SerializableUnSerialize, WrongIdThrowsInBothForms) {
    const Bytes bytes = encode(TestLeaf(101, {7}));
    TestLeaf leaf(100, Bytes(1));
    int read_pos = 0;
    const std::string message =
        "Serializable::unSerialize() - objectid in buffer does not match this object.";
    EXPECT_EQ(serializableError([&] { leaf.unSerialize(bytes, read_pos); }), message);
    unsigned int status = 0;
    EXPECT_EQ(serializableError([&] { leaf.unSerializeWithStatus(bytes, read_pos, status); }),
              message);
    EXPECT_EQ(read_pos, 0);
    EXPECT_EQ(status, 0u);
}

TEST(SerializableUnSerialize, ReaderDisagreeingWithTheHeaderSize) {
    const Bytes bytes = encode(TestLeaf(100, {1, 2, 3}));
    TestLeaf leaf(100, Bytes(3));
    leaf.setShortfall(1);
    int read_pos = 0;
    EXPECT_EQ(serializableError([&] { leaf.unSerialize(bytes, read_pos); }),
              "Serializable::unSerialize() - data_size in header wrong.");
    EXPECT_EQ(read_pos, 0);

    // Earlier bits are kept; only bit 8 is added.
    unsigned int status = Serializable::STATUS_UNKNOWN_OBJECT_ID;
    leaf.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID | Serializable::STATUS_UNDECODABLE);
    EXPECT_EQ(read_pos, 0);
}

TEST(SerializableUnSerialize, ThrowingReaderSetsBit8InTheStatusForm) {
    // The reader wants 4 bytes where the record holds 2 and the buffer ends.
    const Bytes bytes = encode(TestLeaf(100, {1, 2}));
    TestLeaf leaf(100, Bytes(4));
    int read_pos = 0;
    EXPECT_EQ(serializableError([&] { leaf.unSerialize(bytes, read_pos); }),
              "Serializable::checkReadPos() - Attempt to read past end of buffer.");
    unsigned int status = 0;
    leaf.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
    EXPECT_EQ(read_pos, 0);
}

TEST(SerializableUnSerialize, NegativeReadPosIsAUsageError) {
    const Bytes bytes = encode(TestLeaf(100, {}));
    TestLeaf leaf;
    int read_pos = -1;
    unsigned int status = 0;
    EXPECT_USAGE_ERROR(leaf.unSerialize(bytes, read_pos), "serializable", "negative read_pos");
    EXPECT_USAGE_ERROR(leaf.unSerializeWithStatus(bytes, read_pos, status), "serializable",
                       "negative read_pos");
}

TEST(SerializableStream, WriteToBinaryStreamWritesTheEncoding) {
    const TestLeaf leaf(100, {0, 1, 2});
    std::ostringstream os;
    leaf.writeToBinaryStream(os);
    const std::string s = os.str();
    EXPECT_EQ(Bytes(s.begin(), s.end()), encode(leaf));

    std::ostringstream bad;
    bad.setstate(std::ios_base::failbit);
    EXPECT_USAGE_ERROR(leaf.writeToBinaryStream(bad), "serializable", "output_stream not valid");
    EXPECT_TRUE(bad.str().empty());
}

TEST(SerializableText, OperatorShiftPrintsTheLine) {
    std::ostringstream os;
    os << TestLeaf(100, {1, 2, 3});
    EXPECT_EQ(os.str(), "3");
}

TEST(PadString, PadsOnTheLeftAndNeverTruncates) {
    EXPECT_EQ(padString("ab", 5), "   ab");
    EXPECT_EQ(padString("abcdef", 5), "abcdef");
    EXPECT_EQ(padString("abcde", 5), "abcde");
    EXPECT_EQ(padString("", 2), "  ");
    EXPECT_EQ(padString("ab", -3), "ab");
    EXPECT_EQ(unPadString("   ab"), "ab");
    EXPECT_EQ(unPadString("a b "), "a b ");
    EXPECT_EQ(unPadString("   "), "");
    EXPECT_EQ(unPadString(""), "");
    EXPECT_EQ(unPadString(padString("name", 32)), "name");
}

}  // namespace
