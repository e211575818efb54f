#include <gtest/gtest.h>

#include <eod/eod.h>

#include "recordtesting.h"
#include "testrecord.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

typedef boost::shared_ptr<Serializable> Ptr;

Ptr leaf(char id, Bytes data = Bytes(), bool forbid_siblings = true) {
    boost::shared_ptr<TestLeaf> p(new TestLeaf(id, std::move(data)));
    p->setForbidSiblings(forbid_siblings);
    return p;
}

TEST(SerializableComposite, EmptyCompositeIsFourBytes) {
    const TestComposite c;
    EXPECT_EQ(c.numDataBytes(), 1u);
    EXPECT_EQ(encode(c), (Bytes{110, 0x00, 0x01, 0x00}));
}

TEST(SerializableComposite, InsertRefusesNullAndItself) {
    boost::shared_ptr<TestComposite> c(new TestComposite);
    EXPECT_EQ(serializableError([&] { c->addSubObject(Ptr()); }),
              "SerializableComposite::addSubObject - Attempted to null object");
    EXPECT_EQ(serializableError([&] { c->addSubObject(c); }),
              "SerializableComposite::addSubObject - Attempted to add a SerializableComposite "
              "object to itself");
    EXPECT_EQ(c->numSubObjects(), 0);
}

TEST(SerializableComposite, AtMost255SubObjects) {
    typedef TestRecord<100, true> Sibling;
    TestComposite c;
    for (int i = 0; i < 255; ++i) c.addSubObject(Ptr(new Sibling(i)));
    EXPECT_EQ(c.numSubObjects(), 255);
    EXPECT_EQ(serializableError([&] { c.addSubObject(leaf(101)); }),
              "SerializableComposite::addSubObject - Too many sub-objects");
    EXPECT_EQ(c.numSubObjects(), 255);
    EXPECT_FALSE(c.hasSubObjectID(101));

    const Bytes bytes = encode(c);
    EXPECT_EQ(bytes.size(), 3u + 1u + 255u * 9u);
    EXPECT_EQ(bytes[3], 0xFF);

    ScopedObjectType<Sibling> registered;
    TestComposite back;
    int read_pos = 0;
    ASSERT_TRUE(back.unSerialize(bytes, read_pos));
    ASSERT_EQ(back.numSubObjects(100), 255);
    EXPECT_EQ(back.typedSubObjectAtIndex<Sibling>(100, 254)->value(), 254);
}

TEST(SerializableComposite, DuplicatesNeedBothPermissions) {
    struct Case {
        bool newcomer_forbids;
        bool composite_allows;
        bool accepted;
    };
    const Case cases[] = {
        {true, true, false}, {false, true, true}, {true, false, false}, {false, false, false}};
    for (const Case& k : cases) {
        SCOPED_TRACE(::testing::Message()
                     << "forbids " << k.newcomer_forbids << " allows " << k.composite_allows);
        TestComposite c(k.composite_allows);
        c.addSubObject(leaf(100, {1}, false));
        const Ptr second = leaf(100, {2}, k.newcomer_forbids);
        if (k.accepted) {
            c.addSubObject(second);
            EXPECT_EQ(c.numSubObjects(100), 2);
        } else {
            EXPECT_EQ(serializableError([&] { c.addSubObject(second); }),
                      "SerializableComposite::addSubObject - Sub-object already exists in this "
                      "composite");
            EXPECT_EQ(c.numSubObjects(100), 1);
        }
        c.addSubObject(leaf(101));  // another id is always fine
    }
}

TEST(SerializableComposite, OrderedBySignedIdThenInsertion) {
    TestComposite c;
    c.addSubObject(leaf(55, {0x55}));
    c.addSubObject(leaf(51, {0x51}, false));
    c.addSubObject(leaf(53, {0x53}));
    c.addSubObject(leaf(-100, {0x9C}));
    c.addSubObject(leaf(51, {0x52}, false));

    EXPECT_EQ(encode(c), recordBytes(110, concat({{5},
                                                  recordBytes(-100, {0x9C}),
                                                  recordBytes(51, {0x51}),
                                                  recordBytes(51, {0x52}),
                                                  recordBytes(53, {0x53}),
                                                  recordBytes(55, {0x55})})));

    const auto all = c.subObjects();
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all[0]->objectID(), -100);
    EXPECT_EQ(c.subObjects(51).size(), 2u);
    EXPECT_EQ(boost::dynamic_pointer_cast<TestLeaf>(c.subObjectAtIndex(51, 1))->data(),
              Bytes{0x52});
    EXPECT_FALSE(c.subObjectAtIndex(51, 2));
    EXPECT_FALSE(c.subObject(52));
}

TEST(SerializableComposite, InvalidSubObjectsAreKeptButNotWritten) {
    TestComposite c;
    const boost::shared_ptr<TestLeaf> off(new TestLeaf(51, {1, 2, 3}));
    off->setEnabled(false);
    c.addSubObject(off);
    c.addSubObject(leaf(52, {9}));
    EXPECT_EQ(c.numSubObjects(), 2);
    EXPECT_EQ(c.numValidSubObjects(), 1);
    const Bytes bytes = encode(c);
    EXPECT_EQ(bytes, recordBytes(110, concat({{1}, recordBytes(52, {9})})));
    EXPECT_EQ(bytes.size(), c.numTotalBytes());
}

TEST(SerializableComposite, RemoveAndLookUp) {
    TestComposite c;
    const Ptr a = leaf(51, {1}, false);
    const Ptr b = leaf(51, {2}, false);
    const Ptr d = leaf(52);
    c.addSubObject(a);
    c.addSubObject(b);
    c.addSubObject(d);
    EXPECT_TRUE(c.hasSubObjectID(52));
    EXPECT_EQ(c.removeSubObjectAtIndex(51, 1), b);
    EXPECT_FALSE(c.removeSubObjectAtIndex(51, 1));
    c.removeSubObject(*d);
    EXPECT_FALSE(c.hasSubObjectID(52));
    EXPECT_EQ(serializableError([&] { c.removeSubObject(*d); }),
              "SerializableComposite::removeSubObject - Sub object not present");
    EXPECT_EQ(c.removeSubObject(51), a);
    EXPECT_FALSE(c.removeSubObject(51));
    EXPECT_EQ(c.numSubObjects(), 0);
}

TEST(SerializableComposite, TypedLookUp) {
    TestComposite c;
    c.addSubObject(Ptr(new TestRecord<51>(7)));
    EXPECT_EQ(c.typedSubObject<TestRecord<51>>(51)->value(), 7);
    EXPECT_FALSE(c.typedSubObject<TestRecord<52>>(52));
    EXPECT_EQ(serializableError([&] { c.typedSubObject<TestRecord<52>>(51); }),
              "SerializableComposite::subObject() - programming error. ID does not match "
              "object type");
    const TestComposite& cc = c;
    EXPECT_EQ(cc.typedSubObjectAtIndex<TestRecord<51>>(51, 0)->value(), 7);
    EXPECT_EQ(serializableError([&] { cc.typedSubObject<TestLeaf>(51); }),
              "SerializableComposite::subObject() - programming error. ID does not match "
              "object type");

    const auto added = c.typedSubObjectAddIfMissing<TestRecord<52>>();
    EXPECT_EQ(c.typedSubObjectAddIfMissing<TestRecord<52>>(), added);
    EXPECT_EQ(c.numSubObjects(52), 1);
}

TEST(SerializableComposite, CopiesAreDeep) {
    TestComposite c;
    c.addSubObject(Ptr(new TestRecord<51>(1)));
    c.addSubObject(leaf(50, {1}, false));
    c.addSubObject(leaf(50, {2}, false));
    TestComposite copy(c);
    EXPECT_EQ(encode(copy), encode(c));
    copy.typedSubObject<TestRecord<51>>(51)->setValue(2);
    EXPECT_EQ(c.typedSubObject<TestRecord<51>>(51)->value(), 1);
    EXPECT_NE(copy.subObject(50), c.subObject(50));

    TestComposite assigned;
    assigned.addSubObject(leaf(60));
    assigned = c;
    EXPECT_FALSE(assigned.hasSubObjectID(60));
    EXPECT_EQ(encode(assigned), encode(c));

    const boost::shared_ptr<Serializable> cloned(c.clone());
    EXPECT_EQ(encode(*cloned), encode(c));
}

class CompositeReading : public ::testing::Test {
protected:
    ScopedObjectType<TestRecord<51>> r51;
    ScopedObjectType<TestRecord<52>> r52;
};

TEST_F(CompositeReading, UnknownSubRecordIsDroppedAndTheRestRead) {
    const Bytes unknown = {50, 0x00, 0x05, 1, 2, 3, 4, 5};
    const Bytes data = concat({{3}, unknown, encode(TestRecord<51>(7)), encode(TestRecord<52>(8))});
    const Bytes bytes = recordBytes(110, data);

    TestComposite c;
    c.addSubObject(leaf(60));  // reading replaces what was there
    int read_pos = 0;
    ASSERT_TRUE(c.unSerialize(bytes, read_pos));
    EXPECT_EQ(read_pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(c.numSubObjects(), 2);
    EXPECT_EQ(c.typedSubObject<TestRecord<51>>(51)->value(), 7);
    EXPECT_EQ(c.typedSubObject<TestRecord<52>>(52)->value(), 8);

    TestComposite s;
    unsigned int status = 0;
    read_pos = 0;
    s.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status, Serializable::STATUS_UNKNOWN_OBJECT_ID);
    EXPECT_EQ(read_pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(s.numSubObjects(), 2);
}

TEST_F(CompositeReading, SwitchedOffSubRecordIsDropped) {
    const Bytes off = {51, 0x00, 0x06, 0x00, 0, 0, 0, 7, 0x00};
    const Bytes bytes = recordBytes(110, concat({{2}, off, encode(TestRecord<52>(8))}));
    TestComposite c;
    int read_pos = 0;
    ASSERT_TRUE(c.unSerialize(bytes, read_pos));
    EXPECT_FALSE(c.hasSubObjectID(51));
    EXPECT_TRUE(c.hasSubObjectID(52));
}

TEST_F(CompositeReading, DuplicateSubRecordsAreRefusedOnReading) {
    const Bytes bytes =
        recordBytes(110, concat({{2}, encode(TestRecord<51>(1)), encode(TestRecord<51>(2))}));
    TestComposite c;
    int read_pos = 0;
    EXPECT_EQ(serializableError([&] { c.unSerialize(bytes, read_pos); }),
              "SerializableComposite::addSubObject - Sub-object already exists in this "
              "composite");
    // What was read before the failure stays.
    EXPECT_EQ(c.numSubObjects(), 1);
    unsigned int status = 0;
    c.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
    EXPECT_EQ(read_pos, 0);
}

TEST_F(CompositeReading, MissingCountByte) {
    const Bytes bytes = {110, 0x00, 0x00};
    TestComposite c;
    int read_pos = 0;
    EXPECT_EQ(serializableError([&] { c.unSerialize(bytes, read_pos); }),
              "SerializableComposite::readFromBuffer() - data_size in header wrong, too much "
              "data read.");
    unsigned int status = 0;
    c.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
}

TEST_F(CompositeReading, Count255FollowedByThreeBytes) {
    // The three bytes are an empty record of unknown id 0; then the bytes run out.
    const Bytes bytes = {110, 0x00, 0x04, 0xFF, 0x00, 0x00, 0x00};
    TestComposite c;
    int read_pos = 0;
    EXPECT_EQ(serializableError([&] { c.unSerialize(bytes, read_pos); }),
              "SerializableFactory::newObject - insufficient data in buffer");
    unsigned int status = 0;
    c.unSerializeWithStatus(bytes, read_pos, status);
    EXPECT_EQ(status,
              Serializable::STATUS_UNKNOWN_OBJECT_ID | Serializable::STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(read_pos, 0);
    EXPECT_EQ(c.numSubObjects(), 0);
}

// Records nested `levels` deep, each a TestRecord<51> holding the next; written outside in
// so that a hundred thousand levels take one pass.
Bytes nested(unsigned int levels) {
    const Bytes own_fields = {0x01, 0, 0, 0, 0};
    std::vector<unsigned int> data_sizes(levels + 1, 0);  // by number of records inside
    for (unsigned int j = 1; j <= levels; ++j) {
        const unsigned int inner = j == 1 ? 0 : data_sizes[j - 1];
        data_sizes[j] = 6 + (j == 1 ? 0 : Serializable::numHeaderBytes(inner) + inner);
    }
    Bytes bytes;
    for (unsigned int j = levels; j >= 1; --j) {
        Serializable::writeHeader(bytes, 51, data_sizes[j]);
        bytes.insert(bytes.end(), own_fields.begin(), own_fields.end());
        bytes.push_back(j == 1 ? 0 : 1);
    }
    return bytes;
}

TEST_F(CompositeReading, NestingIsLimited) {
    const unsigned int limit = Serializable::MAX_NESTING_DEPTH;
    {
        const Bytes bytes = nested(limit);
        unsigned int status = 0;
        int read_pos = 0;
        EXPECT_TRUE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
        EXPECT_EQ(status, 0u);
    }
    for (unsigned int levels : {limit + 1, 100000u}) {
        SCOPED_TRACE(levels);
        const Bytes bytes = nested(levels);
        unsigned int status = 0;
        int read_pos = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
        EXPECT_EQ(status, Serializable::STATUS_UNDECODABLE);
        EXPECT_EQ(read_pos, 0);
        TestRecord<51> r;
        EXPECT_EQ(serializableError([&] { r.unSerialize(bytes, read_pos); }),
                  "SerializableFactory::newObject - could not unSerialize object");
    }
}

}  // namespace
