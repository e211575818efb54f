// First-generation intersection records: gaze V1 (18), gaze V2 (29), head V1 (17).

#include <eod/eod.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;

namespace {

const std::vector<std::string> NAMES = {"", "ab", "nothing", "Screen(1)",
                                        "a name far longer than seven characters"};

template <class T>
T filled(const std::string& name) {
    T record;
    record.setIntersectionObjectIndex(7);
    record.setIntersectionObjectName(name);
    record.setIntersectsScreen(true);
    record.setScreenIntersectionWorldCoordinates({1.5f, -2.25f, 3e7f});
    record.setScreenIntersectionScreenCoordinates({0.125f, -0.5f});
    record.setScreenIntersectionPixelCoordinates({640, -1});
    if constexpr (std::is_same<T, GazeIntersectionOutputDataV2>::value) {
        record.setGazeObjectIntersection({4.0f, 5.0f, -6.0f});
    }
    return record;
}

void expectSameIntersection(const IntersectionOutputBase& a, const IntersectionOutputBase& b) {
    EXPECT_EQ(a.intersectionObjectIndex(), b.intersectionObjectIndex());
    EXPECT_EQ(a.intersectionObjectName(), b.intersectionObjectName());
    EXPECT_EQ(a.intersectsScreen(), b.intersectsScreen());
    EXPECT_EQ(a.screenIntersectionWorldCoordinates(), b.screenIntersectionWorldCoordinates());
    EXPECT_EQ(a.screenIntersectionScreenCoordinates(), b.screenIntersectionScreenCoordinates());
    EXPECT_EQ(a.screenIntersectionPixelCoordinates(), b.screenIntersectionPixelCoordinates());
}

template <class T>
class FirstGenerationRecord : public ::testing::Test {};

using FirstGenerationTypes =
    ::testing::Types<GazeIntersectionOutputDataV1, GazeIntersectionOutputDataV2,
                     HeadIntersectionOutputDataV1>;
TYPED_TEST_SUITE(FirstGenerationRecord, FirstGenerationTypes);

// The common fields, and the gaze object point of the one version that has it.
template <class T>
void expectSameFields(const T& a, const T& b) {
    expectSameIntersection(a, b);
    if constexpr (std::is_same<T, GazeIntersectionOutputDataV2>::value) {
        EXPECT_EQ(a.gazeObjectIntersection(), b.gazeObjectIntersection());
    }
}

TYPED_TEST(FirstGenerationRecord, RoundTripsFieldForField) {
    for (const std::string& name : NAMES) {
        SCOPED_TRACE("name \"" + name + "\"");
        const TypeParam original = filled<TypeParam>(name);
        EXPECT_EQ(original.intersectionObjectName(), name);
        eodtest::expectRoundTripsFieldForField(original, expectSameFields<TypeParam>);
        const boost::shared_ptr<TypeParam> copy(original.clone());
        EXPECT_EQ(encode(*copy), encode(original));
    }
}

// A name of up to seven characters takes 8 bytes; a longer one is written whole.
TYPED_TEST(FirstGenerationRecord, SizeFollowsThePaddedName) {
    const unsigned int fixed =
        std::is_same<TypeParam, GazeIntersectionOutputDataV2>::value ? 53 : 41;
    for (const std::string& name : NAMES) {
        SCOPED_TRACE("name \"" + name + "\"");
        const TypeParam record = filled<TypeParam>(name);
        const unsigned int extra = name.size() > 7 ? name.size() - 7 : 0;
        // Data bytes: the flag, the engine-specific fields and the sub-object count.
        EXPECT_EQ(record.numDataBytes(), 1 + fixed + extra + 1);
        EXPECT_EQ(encode(record).size(), 3 + 1 + fixed + extra + 1);
    }
}

TYPED_TEST(FirstGenerationRecord, EveryTruncationFails) {
    eodtest::expectEveryTruncationRejected<TypeParam>(encode(filled<TypeParam>("Screen(1)")));
}

TEST(GazeIntersectionOutputDataV1, DefaultEncodesExactly) {
    const Bytes expected = {
        0x12, 0x00, 0x2B,                                         // id 18, 43 data bytes
        0x01,                                                     // serialise-enabled
        0xFF, 0xFF, 0xFF, 0xFF,                                   // index -1
        'n',  'o',  't',  'h',  'i', 'n', 'g', 0x00,              // "nothing", already 7 long
        0x00,                                                     // intersects screen
        0,    0,    0,    0,    0,   0,   0,   0,    0, 0, 0, 0,  // world x, y, z
        0,    0,    0,    0,    0,   0,   0,   0,                 // screen x, y
        0,    0,    0,    0,    0,   0,   0,   0,                 // pixel x, y
        0x00,                                                     // no sub-objects
    };
    EXPECT_EQ(encode(GazeIntersectionOutputDataV1()), expected);
}

TEST(IntersectionOutputBase, DefaultsAndConstants) {
    const GazeIntersectionOutputDataV2 gaze;
    EXPECT_EQ(gaze.intersectionObjectIndex(), -1);
    EXPECT_EQ(gaze.intersectionObjectName(), "nothing");
    EXPECT_FALSE(gaze.intersectsScreen());
    EXPECT_EQ(gaze.screenIntersectionWorldCoordinates(), std::vector<float>(3, 0.0f));
    EXPECT_EQ(gaze.screenIntersectionScreenCoordinates(), std::vector<float>(2, 0.0f));
    EXPECT_EQ(gaze.screenIntersectionPixelCoordinates(), std::vector<int>(2, 0));
    EXPECT_EQ(gaze.gazeObjectIntersection(), std::vector<float>(3, 0.0f));
    EXPECT_EQ(IntersectionOutputBase::MAX_OBJ_NAME_LENGTH, 7);
    EXPECT_EQ(IntersectionOutputBase::defaultObjectName(), "nothing");
    EXPECT_EQ(IntersectionOutputBase::defaultScreenName(), "Screen(1)");
    EXPECT_EQ(GazeIntersectionOutputDataBase::latestGazeIntersectionObjectID(), 29);
    EXPECT_EQ(HeadIntersectionOutputDataV1::HEADINTERSECTION_OUTPUT_DATA_V1_ID, 17);
    EXPECT_EQ(GazeIntersectionOutputDataV1::GAZE_INTERSECTION_OUTPUT_DATA_ID, 18);
    EXPECT_EQ(GazeIntersectionOutputDataV2::GAZE_INTERSECTION_OUTPUT_DATA_ID, 29);
}

TEST(IntersectionOutputBase, ShortNameIsLeftPaddedOnTheWireAndUnpaddedOnReading) {
    const Bytes bytes = encode(filled<HeadIntersectionOutputDataV1>("ab"));
    // After the 3-byte header, the flag and the 4-byte index.
    const Bytes name(bytes.begin() + 8, bytes.begin() + 16);
    EXPECT_EQ(name, (Bytes{' ', ' ', ' ', ' ', ' ', 'a', 'b', 0x00}));
    EXPECT_EQ(eodtest::decodeAs<HeadIntersectionOutputDataV1>(bytes).intersectionObjectName(),
              "ab");
}

// Padding cannot be told from leading spaces of the name itself.
TEST(IntersectionOutputBase, LeadingSpacesOfANameDoNotSurviveTheWire) {
    HeadIntersectionOutputDataV1 record;
    record.setIntersectionObjectName("  ab");
    HeadIntersectionOutputDataV1 decoded;
    int pos = 0;
    ASSERT_TRUE(decoded.unSerialize(encode(record), pos));
    EXPECT_EQ(decoded.intersectionObjectName(), "ab");
}

struct SetterCase {
    std::string what;
    std::function<void(IntersectionOutputBase&)> call;
    std::string module;
    std::string reason;
};

const std::string GAZE = "gazeintersectionoutputdatabase";
const std::string GAZE_V2 = "gazeintersectionoutputdatav2";
const std::string HEAD = "headintersectionoutputdatav1";

std::vector<SetterCase> commonSetterCases(const std::string& module, const std::string& msg3d,
                                          const std::string& msg2d) {
    return {
        {"world of 2",
         [](IntersectionOutputBase& r) {
             r.setScreenIntersectionWorldCoordinates({1, 2});
         },
         module, msg3d},
        {"world of 4",
         [](IntersectionOutputBase& r) {
             r.setScreenIntersectionWorldCoordinates({1, 2, 3, 4});
         },
         module, msg3d},
        {"screen of 3",
         [](IntersectionOutputBase& r) {
             r.setScreenIntersectionScreenCoordinates({1, 2, 3});
         },
         module, msg2d},
        {"screen of 0",
         [](IntersectionOutputBase& r) { r.setScreenIntersectionScreenCoordinates({}); }, module,
         msg2d},
        {"pixel of 1",
         [](IntersectionOutputBase& r) { r.setScreenIntersectionPixelCoordinates({1}); }, module,
         msg2d},
        {"pixel of 3",
         [](IntersectionOutputBase& r) {
             r.setScreenIntersectionPixelCoordinates({1, 2, 3});
         },
         module, msg2d},
    };
}

void expectSetterCasesFail(IntersectionOutputBase& record, const std::vector<SetterCase>& cases) {
    const Bytes before = encode(record);
    for (const SetterCase& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_USAGE_ERROR(c.call(record), c.module, c.reason);
        EXPECT_EQ(encode(record), before);
    }
}

TEST(GazeIntersectionOutputDataBase, FailedSettersNameTheProblemAndChangeNothing) {
    std::vector<SetterCase> cases =
        commonSetterCases(GAZE, "3D vector expected", "2D vector expected");
    GazeIntersectionOutputDataV2 v2 = filled<GazeIntersectionOutputDataV2>("ab");
    expectSetterCasesFail(v2, cases);

    auto gazeObject = [](std::vector<float> v) {
        return [v](IntersectionOutputBase& r) {
            dynamic_cast<GazeIntersectionOutputDataBase&>(r).setGazeObjectIntersection(v);
        };
    };
    expectSetterCasesFail(
        v2, {{"gaze object of 2", gazeObject({1, 2}), GAZE_V2, "3D vector expected"},
             {"gaze object of 4", gazeObject({1, 2, 3, 4}), GAZE_V2, "3D vector expected"}});

    // The first version has no such field: even a well-formed value is refused.
    cases.push_back({"gaze object on V1", gazeObject({1, 2, 3}), GAZE,
                     "setGazeObjectIntersection is not valid on this version of "
                     "GazeIntersectionOutputDataBase"});
    GazeIntersectionOutputDataV1 v1 = filled<GazeIntersectionOutputDataV1>("ab");
    expectSetterCasesFail(v1, cases);
}

TEST(HeadIntersectionOutputDataV1, FailedSettersNameTheProblemAndChangeNothing) {
    HeadIntersectionOutputDataV1 head = filled<HeadIntersectionOutputDataV1>("ab");
    expectSetterCasesFail(head, commonSetterCases(HEAD, "screen_intersection not a 3D coordinate",
                                                  "screen_intersection not a 2D coordinate"));
}

TEST(IntersectionOutputBase, SettersWorkThroughTheBase) {
    GazeIntersectionOutputDataV2 gaze;
    IntersectionOutputBase& base = gaze;
    base.setScreenIntersectionWorldCoordinates({1, 2, 3});
    base.setScreenIntersectionScreenCoordinates({4, 5});
    base.setScreenIntersectionPixelCoordinates({6, 7});
    EXPECT_EQ(gaze.screenIntersectionWorldCoordinates(), (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(gaze.screenIntersectionScreenCoordinates(), (std::vector<float>{4, 5}));
    EXPECT_EQ(gaze.screenIntersectionPixelCoordinates(), (std::vector<int>{6, 7}));
}

TEST(IntersectionOutputBase, TextColumns) {
    EXPECT_EQ(eodtest::headerLine(GazeIntersectionOutputDataV1()),
              "GAZE_OBJ_INDEX\tGAZE_OBJ_NAME\tGAZ_SCR_INTSECT\tGSI_WORLD_X\tGSI_WORLD_Y\t"
              "GSI_WORLD_Z\tGSI_SCREEN_X\tGSI_SCREEN_Y\tGSI_PIXEL_X\tGSI_PIXEL_Y");
    EXPECT_EQ(eodtest::valueLine(GazeIntersectionOutputDataV1()),
              "-1\tnothing\t0\t0\t0\t0\t0\t0\t0\t0");
    EXPECT_EQ(eodtest::headerLine(HeadIntersectionOutputDataV1()),
              "HEAD_OBJ_INDEX\tHEAD_OBJ_NAME\tCYC_SCR_INTSECT\tCSI_WORLD_X\tCSI_WORLD_Y\t"
              "CSI_WORLD_Z\tCSI_SCREEN_X\tCSI_SCREEN_Y\tCSI_PIXEL_X\tCSI_PIXEL_Y");
    EXPECT_EQ(eodtest::valueLine(filled<HeadIntersectionOutputDataV1>("Screen(1)")),
              "7\tScreen(1)\t1\t1.5\t-2.25\t3e+07\t0.125\t-0.5\t640\t-1");
    EXPECT_EQ(eodtest::headerLine(GazeIntersectionOutputDataV2()),
              eodtest::headerLine(GazeIntersectionOutputDataV1()) + "\tGOI_X\tGOI_Y\tGOI_Z");
    EXPECT_EQ(eodtest::valueLine(filled<GazeIntersectionOutputDataV2>("ab")),
              "7\tab\t1\t1.5\t-2.25\t3e+07\t0.125\t-0.5\t640\t-1\t4\t5\t-6");
}

// Exposes the conversion hook of the gaze records.
template <class T>
struct Convertible : T {
    using T::assignData;
};

TEST(GazeIntersectionOutputDataBase, AssignDataCopiesBetweenVersions) {
    const GazeIntersectionOutputDataV2 v2 = filled<GazeIntersectionOutputDataV2>("Screen(1)");
    Convertible<GazeIntersectionOutputDataV1> v1;
    v1.setSerializeEnabled(false);
    v1.assignData(v2);
    expectSameIntersection(v1, v2);
    EXPECT_FALSE(v1.serializeEnabled());  // the record's own state stays

    Convertible<GazeIntersectionOutputDataV2> back;
    back.setGazeObjectIntersection({9, 9, 9});
    back.assignData(v1);
    expectSameIntersection(back, v2);
    // V1 has no gaze-object intersection: the origin.
    EXPECT_EQ(back.gazeObjectIntersection(), std::vector<float>(3, 0.0f));
    back.assignData(v2);
    EXPECT_EQ(back.gazeObjectIntersection(), v2.gazeObjectIntersection());
}

TEST(HeadIntersectionOutputDataV1, CopyFromAnyIntersectionCopiesTheSharedFields) {
    HeadIntersectionOutputDataV1 head;
    head.copyFrom(static_cast<const IntersectionOutputBase&>(
        filled<GazeIntersectionOutputDataV2>("Screen(1)")));
    expectSameIntersection(head, filled<HeadIntersectionOutputDataV1>("Screen(1)"));
}

}  // namespace
