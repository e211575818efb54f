#include <gtest/gtest.h>

#include <sstream>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

// Opens up the protected reset().
class ResettableFrame : public EngineOutputData {
public:
    using EngineOutputData::reset;
};

TEST(EngineOutputData, Bytes) {
    EngineOutputData frame;
    EXPECT_EQ(frame.frameNum(), 0u);
    EXPECT_EQ(encode(frame), (Bytes{0x09, 0x00, 0x06, 0x01, 0, 0, 0, 0, 0x00}));
    frame.setFrameNum(1000);
    EXPECT_EQ(encode(frame), (Bytes{0x09, 0x00, 0x06, 0x01, 0x00, 0x00, 0x03, 0xE8, 0x00}));
    EXPECT_EQ(EngineOutputData::THIS_OBJECT_ID, 9);
    EXPECT_EQ(EngineOutputData::ENGINE_OUTPUT_DATA_ID, EngineOutputData::THIS_OBJECT_ID);
}

TEST(EngineOutputData, LogFileExtensions) {
    EXPECT_EQ(EngineOutputData::LOGFILE_EXTENSION(), L".tql");
    EXPECT_EQ(EngineOutputData::LOGFILE_INDEX_EXTENSION(), L".itql");
}

TEST(EngineOutputData, FramesMaySitSideBySide) {
    TestComposite parent(true);
    parent.addSubObject(Ptr(new EngineOutputData));
    parent.addSubObject(Ptr(new EngineOutputData));
    EXPECT_EQ(parent.numSubObjects(9), 2);
}

TEST(EngineOutputData, ResetEmptiesTheFrame) {
    ResettableFrame frame;
    frame.setFrameNum(5);
    frame.setSerializeEnabled(false);
    frame.addSubObject(Ptr(new CompressedSerializableToken(1)));
    frame.reset();
    EXPECT_EQ(encode(frame), encode(EngineOutputData()));
}

class FrameWithSubRecords : public ::testing::Test {
protected:
    FrameWithSubRecords() {
        frame.setFrameNum(0x0A0B0C0D);
        frame.addSubObject(Ptr(new CompressedSerializableToken(7)));
        const boost::shared_ptr<TestRecord<51>> record(new TestRecord<51>(-3));
        record->addSubObject(Ptr(new CompressedSerializableToken(8)));
        frame.addSubObject(record);
        frame.addSubObject(Ptr(new CompressedSerializableToken(9)));
        bytes = encode(frame);
    }

    ScopedObjectType<TestRecord<51>> r51;
    EngineOutputData frame;
    Bytes bytes;
};

TEST_F(FrameWithSubRecords, RoundTrip) {
    const Bytes token7 = {0x60, 0x00, 0x06, 0x01, 0, 0, 0, 7, 0x00};
    const Bytes token8 = {0x60, 0x00, 0x06, 0x01, 0, 0, 0, 8, 0x00};
    const Bytes token9 = {0x60, 0x00, 0x06, 0x01, 0, 0, 0, 9, 0x00};
    const Bytes record51 = concat({{51, 0x00, 0x0F, 0x01, 0xFF, 0xFF, 0xFF, 0xFD, 0x01}, token8});
    const Bytes expected =
        concat({{0x09, 0x00, 0x2A, 0x01, 0x0A, 0x0B, 0x0C, 0x0D, 0x03}, record51, token7, token9});
    EXPECT_EQ(bytes, expected);

    int read_pos = 0;
    const auto back = boost::dynamic_pointer_cast<EngineOutputData>(
        SerializableFactory::newObject(bytes, read_pos));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->frameNum(), 0x0A0B0C0Du);
    EXPECT_EQ(back->typedSubObject<TestRecord<51>>(51)->value(), -3);
    EXPECT_EQ(back->numSubObjects(96), 2);
    EXPECT_EQ(encode(*back), bytes);

    const boost::shared_ptr<EngineOutputData> cloned(frame.clone());
    cloned->typedSubObject<TestRecord<51>>(51)->setValue(4);
    EXPECT_EQ(encode(frame), bytes);
}

TEST_F(FrameWithSubRecords, EveryPrefixIsIncomplete) {
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE(n);
        const Bytes prefix(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
        int read_pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, read_pos, status));
        EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
        EXPECT_EQ(read_pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(prefix, read_pos), SerializableError);
        EngineOutputData f;
        EXPECT_FALSE(f.unSerialize(prefix, read_pos));

        std::istringstream s(std::string(prefix.begin(), prefix.end()));
        status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(s, status));
        EXPECT_EQ(status, Serializable::STATUS_NOT_ENOUGH_DATA);
        std::istringstream t(std::string(prefix.begin(), prefix.end()));
        EXPECT_THROW(SerializableFactory::newObject(t), SerializableError);
    }
}

// The frame's size field rewritten to end where the bytes are cut: the frame looks complete
// and its sub-records are what run short.
TEST_F(FrameWithSubRecords, EveryCutInsideAFrameThatClaimsToBeWhole) {
    for (std::size_t n = 3; n < bytes.size(); ++n) {
        SCOPED_TRACE(n);
        Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
        cut[1] = 0;
        cut[2] = static_cast<unsigned char>(n - 3);
        int read_pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(cut, read_pos, status));
        EXPECT_NE(
            status & (Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE), 0u);
        EXPECT_EQ(read_pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(cut, read_pos), SerializableError);
        EngineOutputData f;
        EXPECT_THROW(f.unSerialize(cut, read_pos), SerializableError);
        std::istringstream t(std::string(cut.begin(), cut.end()));
        EXPECT_THROW(SerializableFactory::newObject(t), SerializableError);
    }
}

TEST_F(FrameWithSubRecords, ReadingIntoAnExistingFrameReplacesItsContent) {
    EngineOutputData other;
    other.setFrameNum(1);
    other.addSubObject(Ptr(new TestRecord<52>));
    int read_pos = 0;
    ASSERT_TRUE(other.unSerialize(bytes, read_pos));
    EXPECT_FALSE(other.hasSubObjectID(52));
    EXPECT_EQ(encode(other), bytes);
}

TEST_F(FrameWithSubRecords, Text) {
    EXPECT_EQ(headerLine(frame), "FRAME_NUM\tVALUE_51\tSTREAM_ID\tSTREAM_ID\tSTREAM_ID");
    EXPECT_EQ(valueLine(frame), "168496141\t-3\t8\t7\t9");
}

}  // namespace
