// Second-generation intersection records: gaze V3 (44), gaze V4 (39), head V2 (45).

#include <eod/eod.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using eodtest::engineRecordBytes;
using eodtest::serializableError;

namespace {

// Exposes the label lookup.
template <class T>
struct Inspectable : T {
    using T::labelToIndex;
};

template <class T>
T filled() {
    T record;
    record.addIntersection("Screen(1)", {1.5f, -2.0f, 3e7f}, {0.25f, 0.5f}, {640, -1});
    record.addIntersection("", {0, 0, 1});
    record.addIntersection("a label longer than seven", {4, 5, 6}, {7, 8});
    record.addIntersection("mirror", {-1, -2, -3}, {-4, -5}, {INT_MAX, INT_MIN});
    if constexpr (std::is_same<T, GazeIntersectionOutputDataV4>::value) {
        record.setEyeId(LEFT_EYE);
    }
    return record;
}

template <class T>
void expectSameItems(const T& a, const T& b) {
    const Inspectable<T>& x = static_cast<const Inspectable<T>&>(a);
    const Inspectable<T>& y = static_cast<const Inspectable<T>&>(b);
    ASSERT_EQ(x.intersectedItems(), y.intersectedItems());
    for (const std::string& label : x.intersectedItems()) {
        SCOPED_TRACE("label \"" + label + "\"");
        EXPECT_EQ(x.labelToIndex(label), y.labelToIndex(label));
        EXPECT_EQ(x.world(label), y.world(label));
        EXPECT_EQ(x.plane(label), y.plane(label));
        EXPECT_EQ(x.pixel(label), y.pixel(label));
    }
    if constexpr (std::is_same<T, GazeIntersectionOutputDataV4>::value) {
        EXPECT_EQ(a.eyeId(), b.eyeId());
    }
}

template <class T>
class SecondGenerationRecord : public ::testing::Test {};

using SecondGenerationTypes =
    ::testing::Types<GazeIntersectionOutputDataV3, GazeIntersectionOutputDataV4,
                     HeadIntersectionOutputDataV2>;
TYPED_TEST_SUITE(SecondGenerationRecord, SecondGenerationTypes);

constexpr unsigned int eyeBytes(bool v4) { return v4 ? 1 : 0; }

TYPED_TEST(SecondGenerationRecord, RoundTripsFieldForField) {
    const TypeParam original = filled<TypeParam>();
    if constexpr (std::is_same<TypeParam, GazeIntersectionOutputDataV4>::value) {
        EXPECT_EQ(original.eyeId(), LEFT_EYE);
    }
    eodtest::expectRoundTripsFieldForField(original, expectSameItems<TypeParam>);
    const boost::shared_ptr<TypeParam> copy(original.clone());
    EXPECT_EQ(encode(*copy), encode(original));
}

TYPED_TEST(SecondGenerationRecord, EmptyRecordIsFourZeroCounts) {
    const TypeParam empty;
    const bool v4 = std::is_same<TypeParam, GazeIntersectionOutputDataV4>::value;
    Bytes expected = {static_cast<unsigned char>(empty.objectID()), 0x00,
                      static_cast<unsigned char>(18 + eyeBytes(v4)), 0x01};
    expected.insert(expected.end(), 16, 0x00);
    if (v4) expected.push_back(0x00);  // RIGHT_EYE
    expected.push_back(0x00);          // no sub-objects
    EXPECT_EQ(encode(empty), expected);
}

// combinedLabelSize + 4 + 4 x labels + 4 + 16 x world + 4 + 12 x plane + 4 + 12 x pixels.
TYPED_TEST(SecondGenerationRecord, SizeFollowsTheFormula) {
    const TypeParam record = filled<TypeParam>();
    const bool v4 = std::is_same<TypeParam, GazeIntersectionOutputDataV4>::value;
    const unsigned int labels = (9 + 1) + (0 + 1) + (25 + 1) + (6 + 1);
    const unsigned int engine = labels + 4 + 4 * 4 + 4 + 16 * 4 + 4 + 12 * 3 + 4 + 12 * 2;
    EXPECT_EQ(record.numDataBytes(), 1 + engine + eyeBytes(v4) + 1);
    EXPECT_EQ(encode(record).size(), 3 + 1 + engine + eyeBytes(v4) + 1);
}

TYPED_TEST(SecondGenerationRecord, EveryTruncationFails) {
    eodtest::expectEveryTruncationRejected<TypeParam>(encode(filled<TypeParam>()));
}

TEST(IntersectionOutputBaseV2, ExactBytesOfOneItem) {
    HeadIntersectionOutputDataV2 record;
    record.addIntersection("ab", {1, 2, 3}, {4, 5}, {6, -7});
    const Bytes expected = {
        0x2D, 0x00, 0x41, 0x01,                                         // header, flag
        0,    0,    0,    1,    'a',  'b',  0x00, 0, 0,    0,    0,     // 1 label: "ab" -> 0
        0,    0,    0,    1,    0,    0,    0,    0,                    // 1 world point, index 0
        0x3F, 0x80, 0,    0,    0x40, 0x00, 0,    0, 0x40, 0x40, 0, 0,  // 1, 2, 3
        0,    0,    0,    1,    0,    0,    0,    0, 0x40, 0x80, 0, 0,
        0x40, 0xA0, 0,    0,  // 1 plane point: 4, 5
        0,    0,    0,    1,    0,    0,    0,    0, 0,    0,    0, 6,
        0xFF, 0xFF, 0xFF, 0xF9,  // 1 pixel: 6, -7
        0x00,                    // no sub-objects
    };
    EXPECT_EQ(encode(record), expected);
}

TEST(IntersectionOutputBaseV2, AddIntersectionReplacesUnderTheSameIndex) {
    Inspectable<GazeIntersectionOutputDataV3> record;
    record.addIntersection("a", {1, 2, 3});
    EXPECT_EQ(record.labelToIndex("a"), 0);
    EXPECT_TRUE(record.hasWorld("a"));
    EXPECT_FALSE(record.hasPlane("a"));
    EXPECT_FALSE(record.hasPixel("a"));
    EXPECT_TRUE(record.plane("a").empty());
    EXPECT_TRUE(record.pixel("a").empty());

    record.addIntersection("a", {4, 5, 6}, {7, 8});
    EXPECT_EQ(record.intersectedItems(), std::vector<std::string>{"a"});
    EXPECT_EQ(record.labelToIndex("a"), 0);
    EXPECT_EQ(record.world("a"), (std::vector<float>{4, 5, 6}));
    EXPECT_EQ(record.plane("a"), (std::vector<float>{7, 8}));
    EXPECT_FALSE(record.hasPixel("a"));

    // A shorter call keeps what it does not give.
    record.addIntersection("a", {9, 9, 9}, {1, 1}, {2, 2});
    record.addIntersection("a", {0, 0, 0});
    EXPECT_EQ(record.plane("a"), (std::vector<float>{1, 1}));
    EXPECT_EQ(record.pixel("a"), (std::vector<int>{2, 2}));

    record.addIntersection("b", {1, 1, 1});
    EXPECT_EQ(record.labelToIndex("b"), 1);
    EXPECT_EQ(record.labelToIndex("c"), -1);
    EXPECT_FALSE(record.hasWorld("c"));
    EXPECT_TRUE(record.world("c").empty());
}

TEST(IntersectionOutputBaseV2, ItemsComeInLabelOrderAndClearAllDataEmptiesThem) {
    GazeIntersectionOutputDataV3 record;
    record.addIntersection("zeta", {1, 2, 3});
    record.addIntersection("alpha", {1, 2, 3});
    record.addIntersection("mu", {1, 2, 3});
    EXPECT_EQ(record.intersectedItems(), (std::vector<std::string>{"alpha", "mu", "zeta"}));
    record.clearAllData();
    EXPECT_TRUE(record.intersectedItems().empty());
    EXPECT_EQ(encode(record), encode(GazeIntersectionOutputDataV3()));
}

struct Table {
    Bytes bytes;
    Table& count(unsigned int n) {
        detail::appendNumber(bytes, n);
        return *this;
    }
    Table& label(const std::string& label, int index) {
        detail::appendString(bytes, label);
        detail::appendNumber(bytes, index);
        return *this;
    }
    Table& raw(const Bytes& raw_bytes) {
        bytes.insert(bytes.end(), raw_bytes.begin(), raw_bytes.end());
        return *this;
    }
    Table& point(int index, std::vector<float> values) {
        detail::appendNumber(bytes, index);
        for (float v : values) detail::appendNumber(bytes, v);
        return *this;
    }
};

// Labels read with indices that the new-label rule would hand out again.
TEST(IntersectionOutputBaseV2, NewLabelsSkipIndicesReadFromBytes) {
    const Bytes bytes =
        engineRecordBytes(GazeIntersectionOutputDataV3::THIS_OBJECT_ID, Table()
                                                                            .count(2)
                                                                            .label("a", 2)
                                                                            .label("b", 1)
                                                                            .count(1)
                                                                            .point(2, {1, 2, 3})
                                                                            .count(0)
                                                                            .count(0)
                                                                            .bytes);
    Inspectable<GazeIntersectionOutputDataV3> record;
    int pos = 0;
    ASSERT_TRUE(record.unSerialize(bytes, pos));
    EXPECT_EQ(record.world("a"), (std::vector<float>{1, 2, 3}));
    record.addIntersection("c", {4, 4, 4});
    record.addIntersection("d", {5, 5, 5});
    EXPECT_EQ(record.labelToIndex("c"), 3);
    EXPECT_EQ(record.labelToIndex("d"), 4);
    EXPECT_EQ(record.world("a"), (std::vector<float>{1, 2, 3}));
    EXPECT_FALSE(record.hasWorld("b"));
}

// labelToIndex and addLabelIndex are virtual: a derived record's own label rule is what the
// base's addIntersection and look-ups use.
class OneIndexForAll : public GazeIntersectionOutputDataV3 {
public:
    mutable int lookups = 0;
    int adds = 0;

protected:
    int labelToIndex(const std::string&) const override {
        ++lookups;
        return 7;
    }

private:
    bool addLabelIndex(const std::string&, int& index) override {
        ++adds;
        index = 7;
        return true;
    }
};

TEST(IntersectionOutputBaseV2, LabelRuleIsVirtual) {
    OneIndexForAll record;
    record.addIntersection("a", {1, 2, 3}, {4, 5});
    EXPECT_EQ(record.adds, 1);
    EXPECT_EQ(record.world("any label"), (std::vector<float>{1, 2, 3}));
    EXPECT_TRUE(record.hasPlane("another"));
    EXPECT_GE(record.lookups, 2);
}

const std::string MODULE = "intersectionoutputbasev2";

TEST(IntersectionOutputBaseV2, FailedAddIntersectionNamesTheProblemAndChangesNothing) {
    using Record = GazeIntersectionOutputDataV3;
    const std::vector<float> w = {1, 2, 3};
    const std::vector<float> p = {1, 2};
    const std::vector<int> px = {1, 2};
    struct Case {
        std::string what;
        std::function<void(Record&, const std::string&)> call;
        std::string reason;
    };
    const std::vector<Case> cases = {
        {"world of 2",
         [&](Record& r, const std::string& l) {
             r.addIntersection(l, {1, 2});
         },
         "world expected to be 3D point"},
        {"world of 4",
         [&](Record& r, const std::string& l) {
             r.addIntersection(l, {1, 2, 3, 4}, p);
         },
         "world expected to be 3D point"},
        {"world checked first",
         [&](Record& r, const std::string& l) { r.addIntersection(l, {1}, {1}, {1}); },
         "world expected to be 3D point"},
        {"plane of 3",
         [&](Record& r, const std::string& l) {
             r.addIntersection(l, w, {1, 2, 3});
         },
         "plane expected to be 2D point"},
        {"plane of 1", [&](Record& r, const std::string& l) { r.addIntersection(l, w, {1}, px); },
         "plane expected to be 2D point"},
        {"pixel of 3",
         [&](Record& r, const std::string& l) {
             r.addIntersection(l, w, p, {1, 2, 3});
         },
         "pixel expected to be 3D point"},
        {"pixel of 0", [&](Record& r, const std::string& l) { r.addIntersection(l, w, p, {}); },
         "pixel expected to be 3D point"},
    };
    for (const std::string label : {"new", "Screen(1)"}) {
        Record record = filled<Record>();
        const Bytes before = encode(record);
        for (const Case& c : cases) {
            SCOPED_TRACE(c.what + " for label " + label);
            EXPECT_USAGE_ERROR(c.call(record, label), MODULE, c.reason);
            EXPECT_EQ(encode(record), before);
        }
    }
}

TEST(GazeIntersectionOutputDataV4, EyeIdIsCheckedAndDefaultsToTheRightEye) {
    GazeIntersectionOutputDataV4 record;
    EXPECT_EQ(record.eyeId(), RIGHT_EYE);
    record.setEyeId(BOTH_EYES);
    EXPECT_USAGE_ERROR(record.setEyeId(static_cast<EyeId>(3)), "gazeintersectionoutputdatav4",
                       "eye_id should be either LEFT_EYE, RIGHT_EYE or BOTH_EYES");
    EXPECT_EQ(record.eyeId(), BOTH_EYES);
    EXPECT_FALSE(record.forbidDuplicateSiblings());
}

TEST(IntersectionOutputBaseV2, TextShowsTheFirstLabelAndZerosForMissingValues) {
    const std::string columns =
        "ITEM_NAME\tWORLD_X\tWORLD_Y\tWORLD_Z\tPLANE_X\tPLANE_Y\tPIXEL_X\tPIXEL_Y";
    EXPECT_EQ(eodtest::headerLine(GazeIntersectionOutputDataV3()), columns);
    EXPECT_EQ(eodtest::headerLine(HeadIntersectionOutputDataV2()), columns);
    EXPECT_EQ(eodtest::headerLine(GazeIntersectionOutputDataV4()), "EYE_ID\t" + columns);

    EXPECT_EQ(eodtest::valueLine(HeadIntersectionOutputDataV2()), "Nothing\t0\t0\t0\t0\t0\t0\t0");
    GazeIntersectionOutputDataV4 record;
    record.setEyeId(LEFT_EYE);
    record.addIntersection("zeta", {9, 9, 9}, {9, 9}, {9, 9});
    record.addIntersection("alpha", {1.5f, 2, 3});
    EXPECT_EQ(eodtest::valueLine(record), "1\talpha\t1.5\t2\t3\t0\t0\t0\t0");
    record.addIntersection("alpha", {1, 2, 3}, {4, 5}, {6, 7});
    EXPECT_EQ(eodtest::valueLine(record), "1\talpha\t1\t2\t3\t4\t5\t6\t7");
}

struct BadInput {
    std::string what;
    char id;
    Bytes engine_data;
    std::string message;
};

const std::string READER = "IntersectionOutputBaseV2::readEngineSpecificData() - ";
const char V3 = GazeIntersectionOutputDataV3::THIS_OBJECT_ID;

TEST(IntersectionOutputBaseV2, ReaderRejectsBadTables) {
    const std::vector<BadInput> cases = {
        {"huge label count", V3, Table().count(0xFFFFFFFF).count(0).count(0).count(0).bytes,
         READER + "number of labels exceeds amount of data in buffer"},
        // 12 bytes of counts and the sub-object count follow: room for 2 labels, not 3.
        {"one label too many", V3, Table().count(3).count(0).count(0).count(0).bytes,
         READER + "number of labels exceeds amount of data in buffer"},
        {"huge world count", V3, Table().count(0).count(0x10000000).count(0).count(0).bytes,
         READER + "number of world points exceeds amount of data in buffer"},
        {"huge plane count", V3, Table().count(0).count(0).count(0xFFFFFFFF).count(0).bytes,
         READER + "number of plane points exceeds amount of data in buffer"},
        {"huge pixel count", V3, Table().count(0).count(0).count(0).count(0x80000000).bytes,
         READER + "number of pixels exceeds amount of data in buffer"},
        {"world point of no label", V3,
         Table().count(1).label("a", 0).count(1).point(1, {1, 2, 3}).count(0).count(0).bytes,
         READER + "index 1 of world points names no label"},
        {"plane point of no label", V3,
         Table().count(0).count(0).count(1).point(0, {1, 2}).count(0).bytes,
         READER + "index 0 of plane points names no label"},
        {"pixel of no label", V3,
         Table().count(0).count(0).count(0).count(1).point(-1, {0, 0}).bytes,
         READER + "index -1 of pixels names no label"},
        // -1 is labelToIndex's "unknown label": no label may be stored under it.
        {"label index -1", V3, Table().count(1).label("a", -1).count(0).count(0).count(0).bytes,
         READER + "label index negative"},
        {"label index INT_MIN", V3,
         Table().count(1).label("a", INT_MIN).count(0).count(0).count(0).bytes,
         READER + "label index negative"},
        {"repeated label", V3,
         Table().count(2).label("a", 0).label("a", 1).count(0).count(0).count(0).bytes,
         READER + "label repeated"},
        {"repeated label index", V3,
         Table().count(2).label("a", 0).label("b", 0).count(0).count(0).count(0).bytes,
         READER + "label index repeated"},
        {"repeated world index", V3,
         Table()
             .count(1)
             .label("a", 0)
             .count(2)
             .point(0, {1, 2, 3})
             .point(0, {1, 2, 3})
             .count(0)
             .count(0)
             .bytes,
         READER + "index 0 of world points repeated"},
        {"eye id 3", GazeIntersectionOutputDataV4::THIS_OBJECT_ID,
         Table().count(0).count(0).count(0).count(0).raw({3}).bytes,
         "GazeIntersectionOutputDataV4::readEngineSpecificData() - eye id out of range"},
        {"eye id -1", GazeIntersectionOutputDataV4::THIS_OBJECT_ID,
         Table().count(0).count(0).count(0).count(0).raw({0xFF}).bytes,
         "GazeIntersectionOutputDataV4::readEngineSpecificData() - eye id out of range"},
    };
    for (const BadInput& c : cases) {
        SCOPED_TRACE(c.what);
        const Bytes bytes = engineRecordBytes(c.id, c.engine_data);
        boost::shared_ptr<Serializable> record = SerializableFactory::newObject(c.id);
        ASSERT_TRUE(record);
        int pos = 0;
        EXPECT_EQ(serializableError([&] { record->unSerialize(bytes, pos); }), c.message);
        EXPECT_EQ(pos, 0);
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, pos, status));
        EXPECT_EQ(status, 8u);
    }
}

TEST(IntersectionOutputBaseV2, LabelRunningToTheEndOfTheBufferIsRejected) {
    // Flag, one label, then label bytes up to the end: no terminator anywhere.
    const Bytes data = Table().raw({0x01}).count(1).raw({'a', 'b', 'c', 'd', 'e'}).bytes;
    const Bytes bytes = eodtest::recordBytes(V3, data);
    int pos = 0;
    EXPECT_EQ(serializableError([&] { GazeIntersectionOutputDataV3().unSerialize(bytes, pos); }),
              "Serializable::readBuffer() - Missing terminator for string.");
}

TEST(IntersectionOutputBaseV2, CountThatTheBytesCanHoldPassesTheCheck) {
    // 12 bytes follow the label count (two labels and the sub-object count): room for two
    // labels, so the count passes and the record runs out at the world point count.
    const Bytes bytes = engineRecordBytes(V3, Table().count(2).label("", 0).label("x", 1).bytes);
    int pos = 0;
    EXPECT_EQ(serializableError([&] { GazeIntersectionOutputDataV3().unSerialize(bytes, pos); }),
              "Serializable::checkReadPos() - Attempt to read past end of buffer.");
}

TEST(IntersectionOutputBaseV2, FailedReadKeepsTheItemsItHad) {
    GazeIntersectionOutputDataV3 record = filled<GazeIntersectionOutputDataV3>();
    const std::vector<std::string> items = record.intersectedItems();
    const Bytes bytes = engineRecordBytes(
        V3, Table().count(1).label("a", 0).count(1).point(5, {1, 2, 3}).count(0).count(0).bytes);
    int pos = 0;
    EXPECT_THROW(record.unSerialize(bytes, pos), SerializableError);
    EXPECT_EQ(record.intersectedItems(), items);
    EXPECT_EQ(record.world("Screen(1)"), (std::vector<float>{1.5f, -2.0f, 3e7f}));
}

}  // namespace
