#include <gtest/gtest.h>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

// An engine output record with no fields of its own.
class EmptyRecord : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 53;
    char objectID() const override { return THIS_OBJECT_ID; }
    EmptyRecord* clone() const override { return new EmptyRecord(*this); }
    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

TEST(EngineOutputBase, EmptyRecordIsFiveBytes) {
    const EmptyRecord r;
    EXPECT_TRUE(r.serializeEnabled());
    EXPECT_EQ(r.numOwnDataBytes(), 1u);
    EXPECT_EQ(encode(r), (Bytes{53, 0x00, 0x02, 0x01, 0x00}));
}

TEST(EngineOutputBase, OwnDataIsFlagThenFieldsThenSubRecords) {
    TestRecord<51> r(0x01020304);
    r.addSubObject(Ptr(new EmptyRecord));
    EXPECT_EQ(encode(r),
              (Bytes{51, 0x00, 0x0B, 0x01, 1, 2, 3, 4, 0x01, 53, 0x00, 0x02, 0x01, 0x00}));
}

TEST(EngineOutputBase, AcceptsEngineOutputRecordsOnly) {
    TestRecord<51> r;
    const std::string message =
        "EngineOutputBase::addSubObject - object not derived from EngineOutputBase";
    EXPECT_EQ(serializableError([&] { r.addSubObject(Ptr(new CompressedSerializable)); }), message);
    EXPECT_EQ(serializableError([&] { r.addSubObject(Ptr(new TestLeaf)); }), message);
    EXPECT_EQ(serializableError([&] { r.addSubObject(Ptr()); }),
              "SerializableComposite::addSubObject - Attempted to null object");
    EXPECT_EQ(r.numSubObjects(), 0);
    // insertSubObject itself does not look at the type.
    r.insertSubObject(Ptr(new TestLeaf));
    EXPECT_EQ(r.numSubObjects(), 1);
}

TEST(EngineOutputBase, SwitchedOffRecord) {
    TestRecord<51> parent(1);
    const boost::shared_ptr<TestRecord<52>> child(new TestRecord<52>(2));
    parent.addSubObject(child);
    child->setSerializeEnabled(false);
    EXPECT_FALSE(child->serializeEnabled());
    EXPECT_EQ(serializableError([&] { encode(*child); }),
              "Serializable::serialize() - trying to serialize invalid object.");
    EXPECT_EQ(encode(parent), encode(TestRecord<51>(1)));
    EXPECT_EQ(parent.numSubObjects(), 1);
    child->setSerializeEnabled(true);
    EXPECT_EQ(parent.numValidSubObjects(), 1);
}

TEST(EngineOutputBase, FlagIsKeptAsRead) {
    for (unsigned char flag : {0x00, 0x01, 0x02, 0xFF}) {
        SCOPED_TRACE(int(flag));
        const Bytes bytes = {51, 0x00, 0x06, flag, 0, 0, 0, 9, 0x00};
        TestRecord<51> r;
        int read_pos = 0;
        ASSERT_TRUE(r.unSerialize(bytes, read_pos));
        EXPECT_EQ(r.serializeEnabled(), flag != 0);
        EXPECT_EQ(r.value(), 9);
        if (flag != 0) {
            EXPECT_EQ(encode(r), bytes);
        }
    }
}

TEST(EngineOutputBase, CopiesCarryTheFlagAndCloneTheSubRecords) {
    TestRecord<51> r(1);
    r.addSubObject(Ptr(new TestRecord<52>(2)));
    r.setSerializeEnabled(false);
    TestRecord<51> copy(r);
    EXPECT_FALSE(copy.serializeEnabled());
    EXPECT_NE(copy.subObject(52), r.subObject(52));
    copy.setSerializeEnabled(true);
    r.setSerializeEnabled(true);
    EXPECT_EQ(encode(copy), encode(r));
    TestRecord<51> assigned;
    assigned = r;
    EXPECT_EQ(encode(assigned), encode(r));
}

TEST(EngineOutputBase, EyeIdNames) {
    EXPECT_EQ(EngineOutputBase::eyeIdName(RIGHT_EYE), "RIGHT EYE");
    EXPECT_EQ(EngineOutputBase::eyeIdName(LEFT_EYE), "LEFT EYE");
    EXPECT_EQ(EngineOutputBase::eyeIdName(BOTH_EYES), "BOTH EYES");
    EXPECT_EQ(&EngineOutputBase::eyeIdName(LEFT_EYE), &EngineOutputBase::eyeIdName(LEFT_EYE));
    for (int bad : {3, -1}) {
        EXPECT_USAGE_ERROR(EngineOutputBase::eyeIdName(EyeId(bad)), "engineoutputbase",
                           "eye_id should be either LEFT_EYE, RIGHT_EYE or BOTH_EYES");
    }
    EXPECT_EQ(RIGHT_EYE, 0);
    EXPECT_EQ(LEFT_EYE, 1);
    EXPECT_EQ(BOTH_EYES, 2);
}

}  // namespace
