// Conversions between record generations (versioning.h) and the upgrade of frames written in
// the older layout (upgrade.h).

#include <cmath>
#include <limits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <eod/engineoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/gazeintersectionoutputdatav1.h>
#include <eod/gazeintersectionoutputdatav2.h>
#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headintersectionoutputdatav1.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/timingoutputdata.h>
#include <eod/upgrade.h>
#include <eod/utils/geomutils.h>
#include <eod/versioning.h>
#include <eod/worldoutputdata.h>
#include <eod/worldoutputdatav2.h>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;

namespace {

const std::string SCREEN = "Screen(1)";

HeadOutputData headV1(char tracking_state) {
    HeadOutputData head;
    head.setTrackingState(tracking_state);
    head.setHeadPosition({0.1f, -0.2f, 0.65f});
    head.setHeadRotation({0.25f, -0.5f, 0.125f});
    head.setHeadPositionConfidence(0.75f);
    head.setModelQualityLevel(3);
    head.setHeadEyeballPos(RIGHT_EYE, {-0.03f, 0.01f, 0.6f});
    head.setHeadEyeballPos(LEFT_EYE, {0.03f, 0.01f, 0.6f});
    return head;
}

FaceLandmark landmark(int id, float x) {
    FaceLandmark l;
    l.id = id;
    l.coordinate = {x, x + 1, x + 2};
    l.texture_coordinate = {x / 8, x / 16};
    return l;
}

FaceOutputData faceV1() {
    FaceOutputData face;
    face.addLandmark(landmark(0, 1.5f));
    face.addLandmark(landmark(600, -2.25f));
    face.addFaceTexture(boost::make_shared<FaceTextureOutputData>());
    return face;
}

GPSOutputData gpsV1() {
    GPSOutputData gps;
    gps.setDataValid(true);
    gps.setGMTTime(123456);
    gps.setLatitude({52, 31, 12, 'N'});
    gps.setLongitude({13, 24, 59, 'E'});
    return gps;  // speed stays -1, "unknown"
}

GazeIntersectionOutputDataV2 gazeIntersectionV2(int index) {
    GazeIntersectionOutputDataV2 gaze;
    gaze.setIntersectionObjectIndex(index);
    gaze.setIntersectionObjectName("mirror");
    gaze.setIntersectsScreen(true);
    gaze.setScreenIntersectionWorldCoordinates({4, 5, 6});
    gaze.setScreenIntersectionScreenCoordinates({0.25f, 0.5f});
    gaze.setScreenIntersectionPixelCoordinates({10, 20});
    gaze.setGazeObjectIntersection({1, 2, 3});
    return gaze;
}

HeadIntersectionOutputDataV1 headIntersectionV1() {
    HeadIntersectionOutputDataV1 head;
    head.setIntersectionObjectName("wheel");
    head.setIntersectsScreen(true);
    head.setScreenIntersectionWorldCoordinates({7, 8, 9});
    head.setScreenIntersectionScreenCoordinates({0.5f, 0.75f});
    head.setScreenIntersectionPixelCoordinates({30, 40});
    return head;
}

GazeOutputData gaze() {
    GazeOutputData gaze;
    gaze.setGazeQualityLevel(RIGHT_EYE, static_cast<GazeQualityLevel>(3));
    gaze.setGazeRotationPitchYaw(LEFT_EYE, {0.125f, -0.25f});
    return gaze;
}

template <class To, class From>
To converted(const From& from) {
    To to;
    convert(from, to);
    return to;
}

}  // namespace

// ---- Head

TEST(Versioning, HeadOldToNewToOldIsExactAndTheNewFormHoldsTheAngles) {
    const HeadOutputData old = headV1(1);
    const HeadOutputDataV2 current = converted<HeadOutputDataV2>(old);
    EXPECT_TRUE(current.isTracking());
    EXPECT_EQ(current.headPosition(), (std::vector<double>{0.1f, -0.2f, 0.65f}));
    EXPECT_EQ(current.headRotation(), (std::vector<double>{0.25, -0.5, 0.125}));
    EXPECT_EQ(current.headRotationQuaternion(),
              utils::fromEulerAngles({0.25, -0.5, 0.125}));
    EXPECT_EQ(current.headPositionConfidence(), 0.75);
    EXPECT_EQ(current.modelQualityLevel(), 3);
    EXPECT_EQ(current.headEyeBallPos(LEFT_EYE), (std::vector<double>{0.03f, 0.01f, 0.6f}));

    EXPECT_EQ(encode(converted<HeadOutputData>(current)), encode(old));
    // The cross-version constructors and assignments are the same conversion.
    EXPECT_EQ(encode(HeadOutputDataV2(old)), encode(current));
    HeadOutputData back;
    back = current;
    EXPECT_EQ(encode(back), encode(old));

    // The switched-off flag comes across, as do sub-records.
    HeadOutputData off = old;
    off.setSerializeEnabled(false);
    off.addSubObject(boost::make_shared<TimingOutputData>());
    const HeadOutputDataV2 off_current(off);
    EXPECT_FALSE(off_current.serializeEnabled());
    EXPECT_EQ(off_current.numSubObjects(), 1);
}

TEST(Versioning, HeadTrackingStateCodesCollapseAndTheQuaternionIsNotKeptGoingBack) {
    const HeadOutputDataV2 current = converted<HeadOutputDataV2>(headV1(7));
    EXPECT_TRUE(current.isTracking());
    EXPECT_EQ(converted<HeadOutputData>(current).trackingState(), 1);
    EXPECT_FALSE(converted<HeadOutputDataV2>(headV1(0)).isTracking());

    // A quaternion of length 2 goes back as its Euler angles and returns of unit length.
    HeadOutputDataV2 scaled;
    scaled.setHeadRotationQuaternion({2, 0, 0, 0});
    const HeadOutputDataV2 again = converted<HeadOutputDataV2>(converted<HeadOutputData>(scaled));
    EXPECT_EQ(again.headRotationQuaternion(), (std::vector<double>{1, 0, 0, 0}));
}

TEST(Versioning, AHeadReadFromBytesConvertsEvenWhenASetterWouldRefuseItsValues) {
    Bytes bytes = encode(headV1(1));
    // The confidence (after header, flag, state, position and rotation) set to 1.5.
    const Bytes one_and_a_half = {0x3F, 0xC0, 0x00, 0x00};
    std::copy(one_and_a_half.begin(), one_and_a_half.end(), bytes.begin() + 3 + 1 + 1 + 24);
    const auto old = eodtest::decodeViaFactory<HeadOutputData>(bytes);
    ASSERT_TRUE(old);
    EXPECT_EQ(converted<HeadOutputDataV2>(*old).headPositionConfidence(), 1.5);
}

// ---- Face and GPS

TEST(Versioning, FaceLandmarksAndTextureComeAcrossAndTheNewFieldsAreUnknown) {
    const FaceOutputData old = faceV1();
    const FaceOutputDataV2 current = converted<FaceOutputDataV2>(old);
    EXPECT_EQ(current.faceLandmarks(), old.faceLandmarks());
    EXPECT_TRUE(current.faceTexture());
    EXPECT_EQ(current.faceCount(), ~0u);
    EXPECT_EQ(current.wearingGlasses(), WEARING_GLASSES_UNKNOWN);
    EXPECT_EQ(encode(converted<FaceOutputData>(current)), encode(old));

    FaceOutputDataV2 counted = current;
    counted.setFaceCount(2);
    counted.setWearingGlasses(WEARING_GLASSES);
    EXPECT_EQ(encode(converted<FaceOutputDataV2>(converted<FaceOutputData>(counted))),
              encode(current));  // count and glasses lost going back
}

TEST(Versioning, GPSCoordinatesTruncateSecondsGoingBackAndRefuseWhatCannotBeHeld) {
    const GPSCoordinateV1 old = {-33, 59, 58, 'S'};
    EXPECT_EQ(converted<GPSCoordinateV1>(converted<GPSCoordinateV2>(old)), old);

    struct Case {
        float seconds;
        int expected;  // -1000: refused
    } cases[] = {{12.9f, 12}, {-0.5f, 0}, {59.999f, 59}, {127.5f, 127}, {128.0f, -1000},
                 {std::numeric_limits<float>::quiet_NaN(), -1000},
                 {-std::numeric_limits<float>::infinity(), -1000}};
    for (const Case& c : cases) {
        GPSCoordinateV2 current = {10, 20, c.seconds, 'W'};
        GPSCoordinateV1 target = {1, 2, 3, 'N'};
        if (c.expected == -1000) {
            EXPECT_USAGE_ERROR(convert(current, target), "versioning",
                               "seconds cannot be held by GPSCoordinateV1");
            EXPECT_EQ(target, (GPSCoordinateV1{1, 2, 3, 'N'})) << c.seconds;
        } else {
            convert(current, target);
            EXPECT_EQ(target, (GPSCoordinateV1{10, 20, static_cast<char>(c.expected), 'W'}));
        }
    }
}

TEST(Versioning, GPSFixKeepsUnknownSpeedAndLosesTheCourseGoingBack) {
    const GPSOutputData old = gpsV1();
    const GPSOutputDataV2 current = converted<GPSOutputDataV2>(old);
    EXPECT_EQ(current.speed(), -1.0f);
    EXPECT_EQ(current.course(), 0.0f);
    EXPECT_EQ(current.latitude(), (GPSCoordinateV2{52, 31, 12.0f, 'N'}));
    EXPECT_EQ(encode(converted<GPSOutputData>(current)), encode(old));

    GPSOutputDataV2 moving = current;
    moving.setSpeed(88.6f);
    moving.setCourse(270);
    EXPECT_EQ(converted<GPSOutputData>(moving).speed(), 89);
    moving.setSpeed(1e6f);
    GPSOutputData target = old;
    EXPECT_USAGE_ERROR(convert(moving, target), "versioning",
                       "speed cannot be held by GPSOutputData");
    EXPECT_EQ(encode(target), encode(old));
}

// ---- Intersections and world

TEST(Versioning, FirstGenerationGazeBecomesAScreenItemAndAnObjectItem) {
    const GazeIntersectionOutputDataV3 current =
        converted<GazeIntersectionOutputDataV3>(gazeIntersectionV2(5));
    EXPECT_EQ(current.intersectedItems(), (std::vector<std::string>{SCREEN, "mirror"}));
    EXPECT_EQ(current.world(SCREEN), (std::vector<float>{4, 5, 6}));
    EXPECT_EQ(current.plane(SCREEN), (std::vector<float>{0.25f, 0.5f}));
    EXPECT_EQ(current.pixel(SCREEN), (std::vector<int>{10, 20}));
    EXPECT_EQ(current.world("mirror"), (std::vector<float>{1, 2, 3}));
    EXPECT_FALSE(current.hasPlane("mirror"));

    // The object index is lost: it comes back as -1, everything else as it was.
    EXPECT_EQ(encode(converted<GazeIntersectionOutputDataV2>(current)),
              encode(gazeIntersectionV2(-1)));
    // New -> old -> new holds a screen item and one object item exactly.
    EXPECT_EQ(encode(converted<GazeIntersectionOutputDataV3>(
                  converted<GazeIntersectionOutputDataV2>(current))),
              encode(current));

    // A V1 gaze has no point on its object: only the screen item. A ray that misses the
    // screen and hits nothing gives no item.
    const GazeIntersectionOutputDataV1 v1(gazeIntersectionV2(5));
    EXPECT_EQ(converted<GazeIntersectionOutputDataV3>(v1).intersectedItems(),
              (std::vector<std::string>{SCREEN}));
    EXPECT_TRUE(converted<GazeIntersectionOutputDataV3>(GazeIntersectionOutputDataV2())
                    .intersectedItems()
                    .empty());
    // Between the two first-generation versions the gaze-object point is zeros, then lost.
    EXPECT_EQ(GazeIntersectionOutputDataV2(v1).gazeObjectIntersection(),
              (std::vector<float>{0, 0, 0}));
    EXPECT_EQ(GazeIntersectionOutputDataV2(v1).intersectionObjectIndex(), 5);
}

TEST(Versioning, SecondGenerationItemsBeyondWhatTheFirstHoldsAreLostGoingBack) {
    GazeIntersectionOutputDataV3 current;
    current.addIntersection("b-item", {1, 1, 1}, {0.5f, 0.5f});
    current.addIntersection("a-item", {2, 2, 2});
    current.addIntersection(SCREEN, {3, 3, 3});
    const GazeIntersectionOutputDataV2 old = converted<GazeIntersectionOutputDataV2>(current);
    EXPECT_TRUE(old.intersectsScreen());
    EXPECT_EQ(old.screenIntersectionWorldCoordinates(), (std::vector<float>{3, 3, 3}));
    EXPECT_EQ(old.screenIntersectionScreenCoordinates(), (std::vector<float>{0, 0}));
    EXPECT_EQ(old.intersectionObjectName(), "a-item");  // first in label order
    EXPECT_EQ(old.gazeObjectIntersection(), (std::vector<float>{2, 2, 2}));
    EXPECT_EQ(old.intersectionObjectIndex(), -1);
}

TEST(Versioning, HeadIntersectionsAndThePerEyeGazeVersions) {
    const HeadIntersectionOutputDataV2 head =
        converted<HeadIntersectionOutputDataV2>(headIntersectionV1());
    EXPECT_EQ(head.intersectedItems(), (std::vector<std::string>{SCREEN}));
    HeadIntersectionOutputDataV1 expected = headIntersectionV1();
    expected.setIntersectionObjectName(IntersectionOutputBase::defaultObjectName());
    EXPECT_EQ(encode(converted<HeadIntersectionOutputDataV1>(head)), encode(expected));

    GazeIntersectionOutputDataV3 v3;
    v3.addIntersection("mirror", {1, 2, 3}, {0.5f, 0.25f}, {4, 5});
    const GazeIntersectionOutputDataV4 v4 = converted<GazeIntersectionOutputDataV4>(v3);
    EXPECT_EQ(v4.eyeId(), BOTH_EYES);
    EXPECT_EQ(v4.pixel("mirror"), (std::vector<int>{4, 5}));
    EXPECT_EQ(encode(converted<GazeIntersectionOutputDataV3>(v4)), encode(v3));
}

TEST(Versioning, WorldChildrenAreConvertedBothWays) {
    WorldOutputData old;
    old.addSubObject(boost::make_shared<GazeIntersectionOutputDataV2>(gazeIntersectionV2(-1)));
    old.addSubObject(boost::make_shared<HeadIntersectionOutputDataV1>());
    const WorldOutputDataV2 current = converted<WorldOutputDataV2>(old);
    ASSERT_TRUE(current.gazeIntersectionOutputData());
    EXPECT_EQ(encode(*current.gazeIntersectionOutputData()),
              encode(converted<GazeIntersectionOutputDataV3>(gazeIntersectionV2(-1))));
    ASSERT_TRUE(current.headIntersectionOutputData());
    EXPECT_EQ(current.numSubObjects(), 2);
    EXPECT_EQ(encode(converted<WorldOutputData>(current)), encode(old));

    WorldOutputDataV2 per_eye = current;
    per_eye.addSubObject(boost::make_shared<GazeIntersectionOutputDataV4>());
    per_eye.addSubObject(boost::make_shared<GazeIntersectionOutputDataV4>());
    EXPECT_EQ(encode(converted<WorldOutputData>(per_eye)), encode(old));
}

// ---- Upgrade

namespace {

// The data of one frame as an older engine wrote it: first-generation records, head, face
// and eye records directly in the frame.
EngineOutputData olderLayoutFrame() {
    EngineOutputData frame;
    frame.setFrameNum(1000);
    frame.addSubObject(boost::make_shared<TimingOutputData>());
    frame.addSubObject(boost::make_shared<HeadOutputData>(headV1(1)));
    frame.addSubObject(boost::make_shared<FaceOutputData>(faceV1()));
    const auto eyes = boost::make_shared<EyeOutputData>();
    eyes->addSubObject(boost::make_shared<GazeOutputData>(gaze()));
    frame.addSubObject(eyes);
    const auto world = boost::make_shared<WorldOutputData>();
    world->addSubObject(boost::make_shared<GazeIntersectionOutputDataV2>(gazeIntersectionV2(-1)));
    world->addSubObject(boost::make_shared<HeadIntersectionOutputDataV1>(headIntersectionV1()));
    frame.addSubObject(world);
    frame.addSubObject(boost::make_shared<GPSOutputData>(gpsV1()));
    return frame;
}

// The same data written by a current engine, record by record through the current setters.
EngineOutputData currentLayoutFrame() {
    EngineOutputData frame;
    frame.setFrameNum(1000);
    frame.addSubObject(boost::make_shared<TimingOutputData>());
    const auto face_set = boost::make_shared<FaceSetOutputData>();
    const auto head = boost::make_shared<HeadOutputDataV2>();
    head->setTrackingState(true);
    head->setHeadPosition({0.1f, -0.2f, 0.65f});
    head->setHeadRotation({0.25, -0.5, 0.125});
    head->setHeadPositionConfidence(0.75);
    head->setModelQualityLevel(3);
    head->setHeadEyeballPos(RIGHT_EYE, {-0.03f, 0.01f, 0.6f});
    head->setHeadEyeballPos(LEFT_EYE, {0.03f, 0.01f, 0.6f});
    face_set->addSubObject(head);
    const auto face = boost::make_shared<FaceOutputDataV2>();
    face->addLandmark(landmark(0, 1.5f));
    face->addLandmark(landmark(600, -2.25f));
    face->addFaceTexture(boost::make_shared<FaceTextureOutputData>());
    face_set->addSubObject(face);
    const auto eyes = boost::make_shared<EyeOutputData>();
    eyes->addSubObject(boost::make_shared<GazeOutputData>(gaze()));
    face_set->addSubObject(eyes);
    frame.addSubObject(face_set);
    const auto world = boost::make_shared<WorldOutputDataV2>();
    const auto gaze_items = boost::make_shared<GazeIntersectionOutputDataV3>();
    gaze_items->addIntersection(SCREEN, {4, 5, 6}, {0.25f, 0.5f}, {10, 20});
    gaze_items->addIntersection("mirror", {1, 2, 3});
    world->addSubObject(gaze_items);
    const auto head_items = boost::make_shared<HeadIntersectionOutputDataV2>();
    head_items->addIntersection(SCREEN, {7, 8, 9}, {0.5f, 0.75f}, {30, 40});
    world->addSubObject(head_items);
    frame.addSubObject(world);
    const auto gps = boost::make_shared<GPSOutputDataV2>();
    gps->setDataValid(true);
    gps->setGMTTime(123456);
    gps->setLatitude({52, 31, 12.0f, 'N'});
    gps->setLongitude({13, 24, 59.0f, 'E'});
    gps->setSpeed(-1);
    frame.addSubObject(gps);
    return frame;
}

}  // namespace

TEST(Upgrade, AnOlderLayoutRecordingUpgradesToTheCurrentLayoutOnceAndForAll) {
    // Through bytes, as a recording of an older engine is read.
    const auto frame =
        eodtest::decodeViaFactory<EngineOutputData>(encode(olderLayoutFrame()));
    ASSERT_TRUE(frame);
    EXPECT_FALSE(frame->headOutputData());  // the accessors see the current generation only

    // Head and face converted (2), head, face and eye moved (3), world and GPS converted (2).
    EXPECT_EQ(upgrade(*frame), 7u);
    EXPECT_EQ(encode(*frame), encode(currentLayoutFrame()));
    EXPECT_TRUE(frame->headOutputData());

    EXPECT_EQ(upgrade(*frame), 0u);
    EXPECT_EQ(encode(*frame), encode(currentLayoutFrame()));
    EngineOutputData current = currentLayoutFrame();
    EXPECT_EQ(upgrade(current), 0u);
}

TEST(Upgrade, ARecordWhoseKindIsAlreadyPresentStaysWhereItIs) {
    EngineOutputData frame;
    const auto face_set = boost::make_shared<FaceSetOutputData>();
    const auto in_set = boost::make_shared<HeadOutputDataV2>();
    face_set->addSubObject(in_set);
    face_set->addSubObject(boost::make_shared<FaceOutputData>(faceV1()));
    frame.addSubObject(face_set);
    frame.addSubObject(boost::make_shared<HeadOutputData>(headV1(1)));
    frame.addSubObject(boost::make_shared<GPSOutputData>());
    frame.addSubObject(boost::make_shared<GPSOutputDataV2>());

    // The set's face and the frame's head are converted; nothing moves or disappears.
    EXPECT_EQ(upgrade(frame), 2u);
    EXPECT_EQ(frame.headOutputData(), in_set);
    EXPECT_TRUE(frame.hasSubObjectID(HeadOutputDataV2::THIS_OBJECT_ID));
    EXPECT_TRUE(face_set->faceOutputData());
    EXPECT_TRUE(frame.gpsOutputData());
    EXPECT_TRUE(frame.gpsOutputDataV2());
    const Bytes once = encode(frame);
    EXPECT_EQ(upgrade(frame), 0u);
    EXPECT_EQ(encode(frame), once);
}

TEST(Upgrade, AddingAHeadToAnOlderFrameConvertsItsHeadInsteadOfShadowingIt) {
    EngineOutputData frame;
    frame.addSubObject(boost::make_shared<HeadOutputData>(headV1(1)));
    const auto head = addHeadOutputDataIfMissing(frame);
    EXPECT_EQ(head->headPositionConfidence(), 0.75);
    EXPECT_EQ(frame.numSubObjects(), 1);
    const auto face_set = frame.face(0);
    EXPECT_EQ(face_set->headOutputData(), head);
    EXPECT_EQ(frame.headOutputData(), head);
    EXPECT_EQ(upgradeFaceSetOutputData(frame), face_set);
    EXPECT_EQ(migrateFaceSetOutputData(frame, *face_set), 0u);

    // A frame without face records gets no face set from the upgrade.
    EngineOutputData timing_only;
    timing_only.addSubObject(boost::make_shared<TimingOutputData>());
    EXPECT_FALSE(upgradeFaceSetOutputData(timing_only));
    EXPECT_EQ(timing_only.numFaces(), 0);
}
