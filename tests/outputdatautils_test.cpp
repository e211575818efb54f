// The output-data helpers on gaze geometry with known answers.

#include <cmath>
#include <limits>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <eod/engineoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/facesetoutputdata.h>
#include <eod/gazeoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/utils/geomutilserror.h>
#include <eod/utils/outputdatautils.h>

#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::utils;

namespace {

const float EYE_X = 0.03f;  // eyeball centres at (-EYE_X, 0, 0) and (EYE_X, 0, 0)
const float PI = 3.14159265358979f;

GazeQualityLevel level(int l) { return static_cast<GazeQualityLevel>(l); }

// Right eye at -x, left eye at +x, each looking along (pitch 0, yaw).
GazeOutputData eyes(int right_level, float right_yaw, int left_level, float left_yaw) {
    GazeOutputData gaze;
    gaze.setGazeQualityLevel(RIGHT_EYE, level(right_level));
    gaze.setGazeQualityLevel(LEFT_EYE, level(left_level));
    gaze.setEyeballCentre(RIGHT_EYE, {-EYE_X, 0, 0});
    gaze.setEyeballCentre(LEFT_EYE, {EYE_X, 0, 0});
    gaze.setGazeRotationPitchYaw(RIGHT_EYE, {0, right_yaw});
    gaze.setGazeRotationPitchYaw(LEFT_EYE, {0, left_yaw});
    return gaze;
}

void expectNear(const std::vector<float>& actual, const std::vector<float>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-5f) << i;
}

const std::vector<float> ZERO = {0, 0, 0};

}  // namespace

TEST(OutputDataUtils, SymmetricVergenceMeetsOnTheMidline) {
    const float yaw = std::atan2(EYE_X, 0.5f);  // both eyes fixate (0, 0, 0.5)
    const Vergence v = gazeVergence(eyes(3, yaw, 3, -yaw));
    EXPECT_EQ(v.status, VERGENCE_OK);
    expectNear(v.point, {0, 0, 0.5f});
    EXPECT_NEAR(v.distance, 0.5f, 1e-5f);
    EXPECT_NEAR(v.angle, 2 * yaw, 1e-5f);
}

TEST(OutputDataUtils, VergenceNeedsBothEyesAtTheBestLevelAndAPointInFront) {
    struct Case {
        int right, left;
        float right_yaw, left_yaw;
        VergenceStatus status;
        float angle;
    } cases[] = {
        {3, 2, 0.1f, -0.1f, VERGENCE_NOT_TRUSTED, 0},
        {0, 3, 0.1f, -0.1f, VERGENCE_NOT_TRUSTED, 0},
        {3, 3, 0.0f, 0.0f, VERGENCE_NO_POINT, 0},          // parallel: a gaze at infinity
        {3, 3, -0.1f, 0.1f, VERGENCE_NO_POINT, 0.2f},      // crossing behind the eyes
    };
    for (const Case& c : cases) {
        const Vergence v = gazeVergence(eyes(c.right, c.right_yaw, c.left, c.left_yaw));
        EXPECT_EQ(v.status, c.status) << c.right << c.left << c.right_yaw;
        EXPECT_EQ(v.point, ZERO);
        EXPECT_EQ(v.distance, 0.0f);
        EXPECT_NEAR(v.angle, c.angle, 1e-6f);
    }
}

TEST(OutputDataUtils, OneEyeLostLeavesTheOtherEyesRay) {
    const GazeOutputData gaze = eyes(3, 0.2f, NO_TRACKING, -0.2f);
    const GazeRay right = gazeRay(gaze, RIGHT_EYE);
    expectNear(right.direction, {std::sin(0.2f), 0, std::cos(0.2f)});
    for (auto f : {&bestGazeRay, &mergedGazeRay, &cyclopsGazeRay}) {
        GazeRay ray;
        ASSERT_TRUE(f(gaze, ray));
        EXPECT_EQ(ray.eye, RIGHT_EYE);
        EXPECT_EQ(ray.origin, right.origin);
        EXPECT_EQ(ray.direction, right.direction);
    }
    EXPECT_EQ(gazeVergence(gaze).status, VERGENCE_NOT_TRUSTED);
}

TEST(OutputDataUtils, NoEyeTrackedGivesNoRayAndLeavesTheOutputAlone) {
    const GazeOutputData gaze = eyes(NO_TRACKING, 0, NO_TRACKING, 0);
    GazeRay ray;
    ray.origin = {9, 9, 9};
    for (auto f : {&bestGazeRay, &mergedGazeRay, &cyclopsGazeRay}) {
        EXPECT_FALSE(f(gaze, ray));
        EXPECT_EQ(ray.origin, (std::vector<float>{9, 9, 9}));
    }
}

TEST(OutputDataUtils, BestRayTakesTheBetterEyeAndTheRightOneOnATie) {
    struct Case {
        int right, left;
        EyeId expected;
    } cases[] = {{2, 2, RIGHT_EYE}, {3, 3, RIGHT_EYE}, {1, 3, LEFT_EYE}, {3, 1, RIGHT_EYE},
                 {0, 1, LEFT_EYE}};
    for (const Case& c : cases) {
        GazeRay ray;
        ASSERT_TRUE(bestGazeRay(eyes(c.right, 0.1f, c.left, -0.1f), ray));
        EXPECT_EQ(ray.eye, c.expected) << c.right << " " << c.left;
    }
}

TEST(OutputDataUtils, MergedRayWeighsByQualityAndCyclopsSplitsTheDifference) {
    // Right eye level 1 along +z, left eye level 3 along +x.
    const GazeOutputData gaze = eyes(1, 0, 3, PI / 2);
    GazeRay merged;
    ASSERT_TRUE(mergedGazeRay(gaze, merged));
    EXPECT_EQ(merged.eye, BOTH_EYES);
    expectNear(merged.origin, {(-EYE_X + 3 * EYE_X) / 4, 0, 0});
    const float n = std::sqrt(10.0f);
    expectNear(merged.direction, {3 / n, 0, 1 / n});

    GazeRay cyclops;
    ASSERT_TRUE(cyclopsGazeRay(gaze, cyclops));
    expectNear(cyclops.origin, ZERO);
    expectNear(cyclops.direction, {std::sqrt(0.5f), 0, std::sqrt(0.5f)});
}

TEST(OutputDataUtils, OppositeGazesCannotBeCombined) {
    const GazeOutputData gaze = eyes(3, 0, 3, PI);
    GazeRay ray;
    EXPECT_EQ(eodtest::thrownMessage<GeomUtilsError>([&] { mergedGazeRay(gaze, ray); }),
              "tq::eod::utils::mergedGazeRay : gaze directions cancel out");
    EXPECT_EQ(eodtest::thrownMessage<GeomUtilsError>([&] { cyclopsGazeRay(gaze, ray); }),
              "tq::eod::utils::cyclopsGazeRay : gaze directions cancel out");
    EXPECT_TRUE(bestGazeRay(gaze, ray));
}

TEST(OutputDataUtils, NonFiniteValuesFromBytesMakeTheirEyeUntracked) {
    eodtest::Bytes bytes = eodtest::encode(eyes(3, 0.1f, 3, -0.1f));
    // The right pitch (after header, flag, level and centre) set to NaN.
    const eodtest::Bytes nan = {0x7F, 0xC0, 0x00, 0x00};
    std::copy(nan.begin(), nan.end(), bytes.begin() + 3 + 1 + 1 + 12);
    const auto gaze = eodtest::decodeViaFactory<GazeOutputData>(bytes);
    ASSERT_TRUE(gaze);
    EXPECT_FALSE(isEyeTracked(*gaze, RIGHT_EYE));
    EXPECT_TRUE(isEyeTracked(*gaze, LEFT_EYE));
    EXPECT_EQ(gazeVergence(*gaze).status, VERGENCE_NOT_TRUSTED);
    GazeRay ray;
    ASSERT_TRUE(mergedGazeRay(*gaze, ray));
    EXPECT_EQ(ray.eye, LEFT_EYE);
}

TEST(OutputDataUtils, AFrameTracksWhenItsHeadIsTrackedAndAnEyeIs) {
    EngineOutputData frame;
    EXPECT_FALSE(isTracking(frame));
    const auto face_set = addFaceSetOutputDataIfMissing(frame);
    const auto head = boost::make_shared<HeadOutputDataV2>();
    face_set->addSubObject(head);
    const auto eye_record = boost::make_shared<EyeOutputData>();
    const auto gaze = boost::make_shared<GazeOutputData>(eyes(0, 0, 1, 0));
    eye_record->addSubObject(gaze);
    face_set->addSubObject(eye_record);
    EXPECT_FALSE(isTracking(frame));  // head not tracked
    head->setTrackingState(true);
    EXPECT_TRUE(isTracking(frame));
    gaze->setGazeQualityLevel(LEFT_EYE, NO_TRACKING);
    EXPECT_FALSE(isTracking(frame));  // no eye tracked
}
