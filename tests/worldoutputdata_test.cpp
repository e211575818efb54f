// World records (19, 43), the frame's world accessors, and the registrations of all the
// intersection and world records.

#include <eod/eod.h>
#include <gtest/gtest.h>

#include <typeinfo>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using eodtest::serializableError;

namespace {

boost::shared_ptr<GazeIntersectionOutputDataV4> eyeGaze(EyeId eye, float x) {
    boost::shared_ptr<GazeIntersectionOutputDataV4> gaze(new GazeIntersectionOutputDataV4());
    gaze->setEyeId(eye);
    gaze->addIntersection("Screen(1)", {x, 2, 3}, {4, 5}, {6, 7});
    return gaze;
}

WorldOutputDataV2 fullWorldV2() {
    WorldOutputDataV2 world;
    boost::shared_ptr<GazeIntersectionOutputDataV3> gaze(new GazeIntersectionOutputDataV3());
    gaze->addIntersection("door", {1, 1, 1});
    boost::shared_ptr<HeadIntersectionOutputDataV2> head(new HeadIntersectionOutputDataV2());
    head->addIntersection("window", {2, 2, 2}, {3, 3});
    world.addSubObject(eyeGaze(RIGHT_EYE, 10));
    world.addSubObject(eyeGaze(LEFT_EYE, 20));
    world.addSubObject(gaze);
    world.addSubObject(head);
    return world;
}

TEST(WorldOutputDataV2, HoldsOneGazeRecordPerEyeAndRoundTrips) {
    const WorldOutputDataV2 original = fullWorldV2();
    const Bytes bytes = encode(original);
    const auto decoded = eodtest::decodeBothWays<WorldOutputDataV2>(bytes);
    for (const WorldOutputDataV2& world : {decoded.first, decoded.second}) {
        ASSERT_EQ(world.numSubObjects(GazeIntersectionOutputDataV4::THIS_OBJECT_ID), 2);
        for (unsigned char i = 0; i < 2; ++i) {
            SCOPED_TRACE(static_cast<int>(i));
            const auto eye = world.typedSubObjectAtIndex<GazeIntersectionOutputDataV4>(
                GazeIntersectionOutputDataV4::THIS_OBJECT_ID, i);
            ASSERT_TRUE(eye);
            EXPECT_EQ(eye->eyeId(), i == 0 ? RIGHT_EYE : LEFT_EYE);
            EXPECT_EQ(eye->world("Screen(1)"), (std::vector<float>{i == 0 ? 10.0f : 20.0f, 2, 3}));
            EXPECT_EQ(eye->plane("Screen(1)"), (std::vector<float>{4, 5}));
            EXPECT_EQ(eye->pixel("Screen(1)"), (std::vector<int>{6, 7}));
        }
        ASSERT_TRUE(world.gazeIntersectionOutputData());
        EXPECT_EQ(world.gazeIntersectionOutputData()->world("door"), (std::vector<float>{1, 1, 1}));
        ASSERT_TRUE(world.headIntersectionOutputData());
        EXPECT_EQ(world.headIntersectionOutputData()->plane("window"), (std::vector<float>{3, 3}));
    }
}

TEST(WorldOutputDataV2, AccessorsGiveTheChildrenInBothForms) {
    WorldOutputDataV2 world = fullWorldV2();
    const WorldOutputDataV2& view = world;
    EXPECT_EQ(world.gazeIntersectionOutputData().get(), view.gazeIntersectionOutputData().get());
    EXPECT_EQ(world.headIntersectionOutputData().get(), view.headIntersectionOutputData().get());
    world.gazeIntersectionOutputData()->addIntersection("chair", {0, 0, 0});
    EXPECT_TRUE(view.gazeIntersectionOutputData()->hasWorld("chair"));

    const WorldOutputDataV2 empty;
    EXPECT_FALSE(empty.gazeIntersectionOutputData());
    EXPECT_FALSE(empty.headIntersectionOutputData());
}

TEST(WorldOutputDataV2, GivesThePerEyeGazeRecords) {
    WorldOutputDataV2 world = fullWorldV2();
    const WorldOutputDataV2& view = world;
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        SCOPED_TRACE(eye);
        const auto gaze = world.gazeIntersectionOutputDataV4(eye);
        ASSERT_TRUE(gaze);
        EXPECT_EQ(gaze->eyeId(), eye);
        EXPECT_EQ(gaze->world("Screen(1)")[0], eye == RIGHT_EYE ? 10.0f : 20.0f);
        EXPECT_EQ(view.gazeIntersectionOutputDataV4(eye).get(), gaze.get());
    }
    EXPECT_FALSE(view.gazeIntersectionOutputDataV4(BOTH_EYES));
    world.addSubObject(eyeGaze(BOTH_EYES, 30));
    ASSERT_TRUE(view.gazeIntersectionOutputDataV4(BOTH_EYES));
    EXPECT_EQ(view.gazeIntersectionOutputDataV4(BOTH_EYES)->world("Screen(1)")[0], 30.0f);
    EXPECT_FALSE(WorldOutputDataV2().gazeIntersectionOutputDataV4(RIGHT_EYE));
}

TEST(WorldOutputDataV2, RefusesASecondGazeRecordOfTheSameVersion) {
    WorldOutputDataV2 world = fullWorldV2();
    EXPECT_EQ(
        serializableError([&] {
            world.addSubObject(boost::shared_ptr<Serializable>(new GazeIntersectionOutputDataV3()));
        }),
        "SerializableComposite::addSubObject - Sub-object already exists in this composite");
}

TEST(WorldOutputData, GazeAccessorPrefersTheNewestVersion) {
    WorldOutputData world;
    const WorldOutputData& view = world;
    EXPECT_FALSE(world.gazeIntersectionOutputData());
    EXPECT_FALSE(view.headIntersectionOutputData());

    boost::shared_ptr<GazeIntersectionOutputDataV1> v1(new GazeIntersectionOutputDataV1());
    world.addSubObject(v1);
    EXPECT_EQ(world.gazeIntersectionOutputData().get(), v1.get());
    boost::shared_ptr<GazeIntersectionOutputDataV2> v2(new GazeIntersectionOutputDataV2());
    world.addSubObject(v2);
    EXPECT_EQ(world.gazeIntersectionOutputData().get(), v2.get());
    EXPECT_EQ(view.gazeIntersectionOutputData().get(), v2.get());

    boost::shared_ptr<HeadIntersectionOutputDataV1> head(new HeadIntersectionOutputDataV1());
    world.addSubObject(head);
    EXPECT_EQ(world.headIntersectionOutputData().get(), head.get());
    EXPECT_EQ(view.headIntersectionOutputData().get(), head.get());
}

WorldOutputData fullWorldV1() {
    WorldOutputData world;
    boost::shared_ptr<GazeIntersectionOutputDataV2> gaze(new GazeIntersectionOutputDataV2());
    gaze->setIntersectionObjectName("Screen(1)");
    gaze->setGazeObjectIntersection({1, 2, 3});
    boost::shared_ptr<HeadIntersectionOutputDataV1> head(new HeadIntersectionOutputDataV1());
    head->setIntersectionObjectIndex(4);
    world.addSubObject(gaze);
    world.addSubObject(head);
    return world;
}

TEST(WorldOutputData, RoundTripsWithItsChildren) {
    const Bytes bytes = encode(fullWorldV1());
    const auto decoded = eodtest::decodeBothWays<WorldOutputData>(bytes);
    for (const WorldOutputData& world : {decoded.first, decoded.second}) {
        ASSERT_TRUE(world.gazeIntersectionOutputData());
        EXPECT_EQ(world.gazeIntersectionOutputData()->intersectionObjectName(), "Screen(1)");
        EXPECT_EQ(world.gazeIntersectionOutputData()->gazeObjectIntersection(),
                  (std::vector<float>{1, 2, 3}));
        ASSERT_TRUE(world.headIntersectionOutputData());
        EXPECT_EQ(world.headIntersectionOutputData()->intersectionObjectIndex(), 4);
    }
}

TEST(WorldRecords, EmptyWorldsEncodeToFiveBytes) {
    EXPECT_EQ(encode(WorldOutputData()), (Bytes{0x13, 0x00, 0x02, 0x01, 0x00}));
    EXPECT_EQ(encode(WorldOutputDataV2()), (Bytes{0x2B, 0x00, 0x02, 0x01, 0x00}));
    EXPECT_EQ(WorldOutputData::WORLD_OUTPUT_DATA_ID, 19);
    EXPECT_EQ(WorldOutputDataV2::WORLD_OUTPUT_DATA_V2_ID, 43);
}

TEST(WorldRecords, EveryTruncationFails) {
    {
        SCOPED_TRACE("WorldOutputData");
        eodtest::expectEveryTruncationRejected<WorldOutputData>(encode(fullWorldV1()));
    }
    {
        SCOPED_TRACE("WorldOutputDataV2");
        eodtest::expectEveryTruncationRejected<WorldOutputDataV2>(encode(fullWorldV2()));
    }
}

template <class T>
void expectRegistered() {
    SCOPED_TRACE(typeid(T).name());
    const boost::shared_ptr<Serializable> record =
        SerializableFactory::newObject(T::THIS_OBJECT_ID);
    ASSERT_TRUE(record);
    EXPECT_TRUE(boost::dynamic_pointer_cast<T>(record));
    EXPECT_EQ(record->objectID(), T::THIS_OBJECT_ID);
}

TEST(WorldRecords, EveryIntersectionAndWorldRecordIsRegistered) {
    expectRegistered<WorldOutputData>();
    expectRegistered<WorldOutputDataV2>();
    expectRegistered<GazeIntersectionOutputDataV1>();
    expectRegistered<GazeIntersectionOutputDataV2>();
    expectRegistered<GazeIntersectionOutputDataV3>();
    expectRegistered<GazeIntersectionOutputDataV4>();
    expectRegistered<HeadIntersectionOutputDataV1>();
    expectRegistered<HeadIntersectionOutputDataV2>();
}

// Random data under a valid header: decoded or refused, never a crash (run under the
// sanitizers too).
TEST(WorldRecords, RandomDataIsDecodedOrRefused) {
    const char ids[] = {19, 43, 18, 29, 44, 39, 17, 45};
    for (const char id : ids) {
        SCOPED_TRACE(int(id));
        eodtest::expectGarbageSurvived(id, 20240521, 500, 80);
    }
}

TEST(EngineOutputData, WorldOutputDataIsAddedOnceAndFound) {
    EngineOutputData frame;
    const EngineOutputData& view = frame;
    EXPECT_FALSE(frame.worldOutputData());
    EXPECT_FALSE(view.worldOutputData());
    EXPECT_FALSE(worldOutputData(frame));

    const boost::shared_ptr<WorldOutputDataV2> added = addWorldOutputDataIfMissing(frame);
    ASSERT_TRUE(added);
    EXPECT_EQ(addWorldOutputDataIfMissing(frame).get(), added.get());
    EXPECT_EQ(frame.worldOutputData().get(), added.get());
    EXPECT_EQ(view.worldOutputData().get(), added.get());
    EXPECT_EQ(worldOutputData(frame).get(), added.get());
    EXPECT_EQ(frame.numSubObjects(), 1);

    added->addSubObject(eyeGaze(LEFT_EYE, 1));
    EngineOutputData decoded = eodtest::decodeAs<EngineOutputData>(encode(frame));
    ASSERT_TRUE(worldOutputData(decoded));
    EXPECT_EQ(worldOutputData(decoded)->numSubObjects(), 1);
}

// Another class under the world's id is a programming error, reported by the accessor.
struct Impostor : EngineOutputBase {
    char objectID() const override { return WorldOutputDataV2::THIS_OBJECT_ID; }
    Impostor* clone() const override { return new Impostor(*this); }
    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

TEST(EngineOutputData, WorldOutputDataOfTheWrongClassIsRefused) {
    EngineOutputData frame;
    frame.addSubObject(boost::shared_ptr<Serializable>(new Impostor()));
    EXPECT_EQ(
        serializableError([&] { frame.worldOutputData(); }),
        "SerializableComposite::subObject() - programming error. ID does not match object type");
}

}  // namespace
