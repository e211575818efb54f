#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <eod/gazeoutputdata.h>
#include <eod/utils/geomutils.h>
#include <eod/utils/geomutilserror.h>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;

namespace {

const char* const MODULE = "gazeoutputdata";
const GazeQualityLevel LEVEL_2 = GazeQualityLevel(2);
const GazeQualityLevel LEVEL_3 = GazeQualityLevel(3);
const Floats RIGHT_CENTRE = {-0.03f, 0.0f, 0.0f};
const Floats LEFT_CENTRE = {0.03f, 0.0f, 0.0f};

// Pitch and yaw (as the record stores them) of the gaze from `from` to `to`.
Floats pitchYawTowards(const Floats& from, const Doubles& to) {
    const Doubles py =
        utils::pitchYawFromDirection({to[0] - from[0], to[1] - from[1], to[2] - from[2]});
    return {float(py[0]), float(py[1])};
}

GazeOutputData gazeAt(GazeQualityLevel right_level, const Floats& right_pitch_yaw,
                      GazeQualityLevel left_level, const Floats& left_pitch_yaw) {
    GazeOutputData gaze;
    gaze.setGazeQualityLevel(RIGHT_EYE, right_level);
    gaze.setEyeballCentre(RIGHT_EYE, RIGHT_CENTRE);
    gaze.setGazeRotationPitchYaw(RIGHT_EYE, right_pitch_yaw);
    gaze.setGazeQualityLevel(LEFT_EYE, left_level);
    gaze.setEyeballCentre(LEFT_EYE, LEFT_CENTRE);
    gaze.setGazeRotationPitchYaw(LEFT_EYE, left_pitch_yaw);
    return gaze;
}

GazeOutputData sampleGaze() {
    GazeOutputData gaze;
    gaze.setGazeQualityLevel(RIGHT_EYE, LEVEL_3);
    gaze.setEyeballCentre(RIGHT_EYE, {-0.03f, 0.01f, 0.6f});
    gaze.setGazeRotationPitchYaw(RIGHT_EYE, {0.1f, -0.2f});
    gaze.setGazeQualityLevel(LEFT_EYE, GazeQualityLevel(1));
    gaze.setEyeballCentre(LEFT_EYE, {0.031f, 0.011f, 0.61f});
    gaze.setGazeRotationPitchYaw(LEFT_EYE, {0.15f, -0.25f});
    gaze.setGazeCalibrated(true);
    gaze.setSaccade(false);
    return gaze;
}

void expectSameFields(const GazeOutputData& a, const GazeOutputData& b) {
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        EXPECT_EQ(a.gazeQualityLevel(eye), b.gazeQualityLevel(eye));
        EXPECT_EQ(a.eyeballCentre(eye), b.eyeballCentre(eye));
        EXPECT_EQ(a.gazeRotation(eye), b.gazeRotation(eye));
    }
    EXPECT_EQ(a.gazeCalibrated(), b.gazeCalibrated());
    EXPECT_EQ(a.saccade(), b.saccade());
}

// VERGE_PNT_X, _Y, _Z, VERGE_DIST, VERGE_ANGLE as printed.
Floats vergenceColumns(const GazeOutputData& gaze) {
    const std::vector<std::string> columns = eodtest::splitColumns(eodtest::valueLine(gaze));
    EXPECT_EQ(columns.size(), 19u);
    Floats values;
    for (std::size_t i = columns.size() - 5; i < columns.size(); ++i) {
        values.push_back(std::strtof(columns[i].c_str(), nullptr));
    }
    return values;
}

}  // namespace

TEST(GazeOutputData, FreshRecordHasNoTracking) {
    GazeOutputData gaze;
    EXPECT_EQ(gaze.objectID(), 13);
    EXPECT_EQ(eodtest::engineSpecificDataBytes(gaze), 44u);
    EXPECT_EQ(gaze.gazeQualityLevel(RIGHT_EYE), NO_TRACKING);
    EXPECT_EQ(gaze.gazeQualityLevel(LEFT_EYE), NO_TRACKING);
    EXPECT_EQ(gaze.gazeRotation(LEFT_EYE), Floats(2));
    EXPECT_EQ(gaze.eyeballCentre(LEFT_EYE), Floats(3));
}

TEST(GazeOutputData, EncodesItsFieldsInWireOrder) {
    Bytes expected = {13, 0x00, 46, 0x01, 3};
    for (float v : {-0.03f, 0.01f, 0.6f, 0.1f, -0.2f}) detail::appendNumber(expected, v);
    expected.push_back(1);
    for (float v : {0.031f, 0.011f, 0.61f, 0.15f, -0.25f}) detail::appendNumber(expected, v);
    expected.insert(expected.end(), {1, 0, 0});  // calibrated, saccade, no sub-records
    EXPECT_EQ(encode(sampleGaze()), expected);
}

TEST(GazeOutputData, RoundTripsFieldForField) {
    eodtest::expectRoundTripsFieldForField(sampleGaze(), expectSameFields);
}

TEST(GazeOutputData, FailedSettersThrowAndChangeNothing) {
    const char* const eye_message = "eye_id neither LEFT_EYE nor RIGHT_EYE";
    const char* const gql_message = "gql not in the range NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1";
    GazeOutputData gaze = sampleGaze();
    const Bytes before = encode(gaze);
    EXPECT_USAGE_ERROR(gaze.setGazeQualityLevel(0, GazeQualityLevel(4)), MODULE, gql_message);
    EXPECT_USAGE_ERROR(gaze.setGazeQualityLevel(0, GazeQualityLevel(-1)), MODULE, gql_message);
    EXPECT_USAGE_ERROR(gaze.setGazeQualityLevel(2, LEVEL_3), MODULE, eye_message);
    EXPECT_USAGE_ERROR(gaze.setEyeballCentre(BOTH_EYES, {1, 2, 3}), MODULE, eye_message);
    EXPECT_USAGE_ERROR(gaze.setEyeballCentre(LEFT_EYE, {1, 2}), MODULE,
                       "eyeball_centre 3D point expected");
    EXPECT_USAGE_ERROR(gaze.setGazeRotationPitchYaw(BOTH_EYES, {1, 2}), MODULE, eye_message);
    EXPECT_USAGE_ERROR(gaze.setGazeRotationPitchYaw(LEFT_EYE, {1, 2, 3}), MODULE,
                       "gaze_rot 2D rotation vector expected");
    EXPECT_USAGE_ERROR(gaze.gazeQualityLevel(BOTH_EYES), MODULE, eye_message);
    EXPECT_USAGE_ERROR(gaze.eyeballCentre(-1), MODULE, eye_message);
    EXPECT_USAGE_ERROR(gaze.gazeRotation(BOTH_EYES), MODULE, eye_message);
    EXPECT_EQ(encode(gaze), before);
}

TEST(GazeOutputData, NamesTheFourQualityLevels) {
    EXPECT_EQ(GazeOutputData::gazeQualityLevelName(NO_TRACKING), "GQL 0");
    EXPECT_EQ(GazeOutputData::gazeQualityLevelName(GazeQualityLevel(1)), "GQL 1");
    EXPECT_EQ(GazeOutputData::gazeQualityLevelName(LEVEL_2), "GQL 2");
    EXPECT_EQ(GazeOutputData::gazeQualityLevelName(LEVEL_3), "GQL 3");
    for (int bad : {-1, 4}) {
        EXPECT_USAGE_ERROR(GazeOutputData::gazeQualityLevelName(GazeQualityLevel(bad)), MODULE,
                           "gql not in the range NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1");
    }
}

TEST(GazeOutputData, PrintsItsColumnsEndingWithVergence) {
    EXPECT_EQ(eodtest::headerLine(GazeOutputData()),
              "GAZE_QUAL_R\tEYEBALL_R_X\tEYEBALL_R_Y\tEYEBALL_R_Z\tGAZE_ROT_R_X\tGAZE_ROT_R_Y\t"
              "GAZE_QUAL_L\tEYEBALL_L_X\tEYEBALL_L_Y\tEYEBALL_L_Z\tGAZE_ROT_L_X\tGAZE_ROT_L_Y\t"
              "GAZE_CALIB\tSACCADE\t"
              "VERGE_PNT_X\tVERGE_PNT_Y\tVERGE_PNT_Z\tVERGE_DIST\tVERGE_ANGLE");
    EXPECT_EQ(eodtest::valueLine(sampleGaze()),
              "3\t-0.03\t0.01\t0.6\t0.1\t-0.2\t1\t0.031\t0.011\t0.61\t0.15\t-0.25\t1\t0\t0\t0\t0\t"
              "0\t0");
}

TEST(GazeOutputData, VergenceNeedsLevelThreeOnBothEyes) {
    const Floats right = pitchYawTowards(RIGHT_CENTRE, {0, 0, 0.5});
    const Floats left = pitchYawTowards(LEFT_CENTRE, {0, 0, 0.5});
    EXPECT_EQ(vergenceColumns(GazeOutputData()), Floats(5));
    for (int right_level = 0; right_level < NUM_GAZE_QUALITY_LEVELS; ++right_level) {
        for (int left_level = 0; left_level < NUM_GAZE_QUALITY_LEVELS; ++left_level) {
            SCOPED_TRACE(std::to_string(right_level) + " " + std::to_string(left_level));
            const Floats columns = vergenceColumns(gazeAt(GazeQualityLevel(right_level), right,
                                                          GazeQualityLevel(left_level), left));
            if (right_level == 3 && left_level == 3) {
                EXPECT_NE(columns, Floats(5));
            } else {
                EXPECT_EQ(columns, Floats(5));
            }
        }
    }
}

TEST(GazeOutputData, VergenceIsWhereTheGazeRaysMeet) {
    const Doubles target = {0.0, 0.1, 0.5};
    const GazeOutputData gaze = gazeAt(LEVEL_3, pitchYawTowards(RIGHT_CENTRE, target), LEVEL_3,
                                       pitchYawTowards(LEFT_CENTRE, target));
    const Floats columns = vergenceColumns(gaze);
    // Float rays that meet at a small angle place their meeting point only to some microns.
    EXPECT_NEAR(columns[0], 0.0, 1e-5);
    EXPECT_NEAR(columns[1], 0.1, 1e-5);
    EXPECT_NEAR(columns[2], 0.5, 1e-5);
    // From the midpoint of the eyeball centres, the origin.
    EXPECT_NEAR(columns[3], std::sqrt(0.1 * 0.1 + 0.5 * 0.5), 1e-5);
    // The angle between (0.03, 0.1, 0.5) and (-0.03, 0.1, 0.5).
    const double cosine = (0.26 - 0.0009) / 0.2609;
    EXPECT_NEAR(columns[4], std::acos(cosine), 1e-6);
}

namespace {

// Level-3 gaze whose rays have no vergence point: parallel (a far target), and turned
// outwards (the rays come closest behind the eyes), with its angle between the directions.
struct NoMeetingPoint {
    const char* reason;
    GazeOutputData gaze;
    double angle;
};

std::vector<NoMeetingPoint> gazeWithoutMeetingPoint() {
    const Floats ahead = {0.05f, 0.1f};
    return {{"parallel", gazeAt(LEVEL_3, ahead, LEVEL_3, ahead), 0.0},
            {"diverging",
             gazeAt(LEVEL_3, pitchYawTowards(RIGHT_CENTRE, {-1, 0, 1}), LEVEL_3,
                    pitchYawTowards(LEFT_CENTRE, {1, 0, 1})),
             2 * std::atan2(0.97, 1.0)}};
}

}  // namespace

TEST(GazeOutputData, VergenceWithoutAMeetingPointIsAGeometryError) {
    for (const NoMeetingPoint& c : gazeWithoutMeetingPoint()) {
        SCOPED_TRACE(c.reason);
        const std::string message =
            std::string("tq::eod::utils::rayIntersectionPoint : rays are ") + c.reason;
        std::ostringstream fields;
        EXPECT_EQ(eodtest::thrownMessage<utils::GeomUtilsError>(
                      [&] { c.gaze.writeVergenceFields(fields); }),
                  message);
        EXPECT_EQ(fields.str(), "");
        // The record's own columns are not written either: no half line.
        std::ostringstream line;
        EXPECT_EQ(eodtest::thrownMessage<utils::GeomUtilsError>([&] { c.gaze.printLine(line); }),
                  message);
        EXPECT_EQ(line.str(), "");
    }
}

TEST(GazeOutputData, VergenceErrorsAsEmptyCellsKeepTheLineAndTheAngle) {
    for (const NoMeetingPoint& c : gazeWithoutMeetingPoint()) {
        SCOPED_TRACE(c.reason);
        std::ostringstream os;
        GazeOutputData::setVergenceErrorsAsEmptyCells(os, true);
        c.gaze.printLine(os);
        const std::vector<std::string> columns = eodtest::splitColumns(os.str());
        ASSERT_EQ(columns.size(), 19u);
        EXPECT_EQ(std::vector<std::string>(columns.begin() + 14, columns.begin() + 18),
                  std::vector<std::string>(4));
        EXPECT_NEAR(std::stod(columns[18]), c.angle, 1e-6);
        // Only for that stream, and only until switched off.
        std::ostringstream other;
        EXPECT_THROW(c.gaze.printLine(other), utils::GeomUtilsError);
        GazeOutputData::setVergenceErrorsAsEmptyCells(os, false);
        EXPECT_THROW(c.gaze.writeVergenceFields(os), utils::GeomUtilsError);
    }
    // Rays that meet print their point as before.
    std::ostringstream os;
    GazeOutputData::setVergenceErrorsAsEmptyCells(os, true);
    const Doubles target = {0.0, 0.1, 0.5};
    gazeAt(LEVEL_3, pitchYawTowards(RIGHT_CENTRE, target), LEVEL_3,
           pitchYawTowards(LEFT_CENTRE, target))
        .writeVergenceFields(os);
    EXPECT_NEAR(std::stod(eodtest::splitColumns(os.str())[1]), 0.1, 1e-5);
}

TEST(GazeOutputData, KeepsAnUnknownLevelReadFromTheWire) {
    Bytes bytes = encode(gazeAt(LEVEL_3, {0, 0.1f}, LEVEL_3, {0, -0.1f}));
    bytes[4] = 7;  // right eye's level
    GazeOutputData gaze;
    int pos = 0;
    ASSERT_TRUE(gaze.unSerialize(bytes, pos));
    EXPECT_EQ(gaze.gazeQualityLevel(RIGHT_EYE), GazeQualityLevel(7));
    EXPECT_EQ(encode(gaze), bytes);
    EXPECT_EQ(vergenceColumns(gaze), Floats(5));
}

TEST(GazeOutputData, EveryTruncationIsRejected) {
    eodtest::expectEveryTruncationRejected<GazeOutputData>(encode(sampleGaze()));
}
