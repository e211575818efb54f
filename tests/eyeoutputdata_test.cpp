// The eye container and the eye-closure and pupil records; gaze has its own test.

#include <limits>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <eod/eyeoutputdata.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using Floats = std::vector<float>;

namespace {

const float NaN = std::numeric_limits<float>::quiet_NaN();

EyeClosureOutputData sampleClosure() {
    EyeClosureOutputData closure;
    closure.setEyeClosure(RIGHT_EYE, 0.25f);
    closure.setEyeClosure(LEFT_EYE, 1.0f);
    closure.setEyeClosureConfidence(RIGHT_EYE, 0.5f);
    closure.setEyeClosureConfidence(LEFT_EYE, 0.0f);
    closure.setEyeClosureCalibStatus(0.75f);
    closure.setBlinking(true);
    closure.setBlinkFrequency(0.3f);
    closure.setAverageBlinkDuration(0.15f);
    closure.setPerclos(0.125f);
    return closure;
}

PupilOutputData samplePupil() {
    PupilOutputData pupil;
    pupil.setPupilPosition(RIGHT_EYE, {-0.03f, 0.01f, 0.6f});
    pupil.setPupilDiameter(RIGHT_EYE, 0.004f);
    pupil.setPupilPosition(LEFT_EYE, {0.031f, 0.011f, 0.61f});
    pupil.setPupilDiameter(LEFT_EYE, 0.0045f);
    return pupil;
}

void expectSameFields(const EyeClosureOutputData& a, const EyeClosureOutputData& b) {
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        EXPECT_EQ(a.eyeClosure(eye), b.eyeClosure(eye));
        EXPECT_EQ(a.eyeClosureConfidence(eye), b.eyeClosureConfidence(eye));
    }
    EXPECT_EQ(a.eyeClosureCalibStatus(), b.eyeClosureCalibStatus());
    EXPECT_EQ(a.blinking(), b.blinking());
    EXPECT_EQ(a.blinkFrequency(), b.blinkFrequency());
    EXPECT_EQ(a.averageBlinkDuration(), b.averageBlinkDuration());
    EXPECT_EQ(a.perclos(), b.perclos());
}

void expectSameFields(const PupilOutputData& a, const PupilOutputData& b) {
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        EXPECT_EQ(a.pupilPosition(eye), b.pupilPosition(eye));
        EXPECT_EQ(a.pupilDiameter(eye), b.pupilDiameter(eye));
    }
}

void appendFloats(Bytes& out, const Floats& values) {
    for (float v : values) detail::appendNumber(out, v);
}

}  // namespace

TEST(EyeClosureOutputData, EncodesItsFieldsInWireOrder) {
    EXPECT_EQ(eodtest::engineSpecificDataBytes(EyeClosureOutputData()), 33u);
    Bytes expected = {12, 0x00, 35, 0x01};
    appendFloats(expected, {0.25f, 1.0f, 0.5f, 0.0f, 0.75f});
    expected.push_back(1);
    appendFloats(expected, {0.3f, 0.15f, 0.125f});
    expected.push_back(0);
    EXPECT_EQ(encode(sampleClosure()), expected);
}

TEST(EyeClosureOutputData, RoundTripsFieldForField) {
    eodtest::expectRoundTripsFieldForField(sampleClosure(), expectSameFields);
}

TEST(EyeClosureOutputData, FailedSettersThrowAndChangeNothing) {
    const char* const module = "eyeclosureoutputdata";
    const char* const eye_message = "eye_id neither LEFT_EYE nor RIGHT_EYE";
    EyeClosureOutputData closure = sampleClosure();
    const Bytes before = encode(closure);
    EXPECT_USAGE_ERROR(closure.setEyeClosure(BOTH_EYES, 0.5f), module, eye_message);
    EXPECT_USAGE_ERROR(closure.setEyeClosureConfidence(-1, 0.5f), module, eye_message);
    EXPECT_USAGE_ERROR(closure.eyeClosure(BOTH_EYES), module, eye_message);
    EXPECT_USAGE_ERROR(closure.eyeClosureConfidence(BOTH_EYES), module, eye_message);
    for (float bad : {-0.0000001f, 1.0000001f, NaN}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(closure.setEyeClosure(LEFT_EYE, bad), module,
                           "closure outside range 0..1");
        EXPECT_USAGE_ERROR(closure.setEyeClosureConfidence(LEFT_EYE, bad), module,
                           "confidence outside range 0..1");
        EXPECT_USAGE_ERROR(closure.setEyeClosureCalibStatus(bad), module,
                           "calib_status outside range 0..1");
        EXPECT_USAGE_ERROR(closure.setPerclos(bad), module, "perclos outside range 0..1");
    }
    for (float bad : {-0.001f, NaN}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(closure.setBlinkFrequency(bad), module, "frequency less than zero");
        EXPECT_USAGE_ERROR(closure.setAverageBlinkDuration(bad), module,
                           "duration less than zero");
    }
    EXPECT_EQ(encode(closure), before);

    closure.setPerclos(1.0f);
    closure.setPerclos(0.0f);
    closure.setBlinkFrequency(0.0f);
    closure.setAverageBlinkDuration(0.0f);
    EXPECT_EQ(closure.perclos(), 0.0f);
}

TEST(EyeClosureOutputData, PrintsItsColumns) {
    EXPECT_EQ(eodtest::headerLine(EyeClosureOutputData()),
              "RIGHT_EYE_CLOSE\tLEFT_EYE_CLOSE\tRIGHT_CLOS_CONF\tLEFT_CLOS_CONF\tEYE_CLOSE_CALIB\t"
              "BLINKING\tBLINK_FREQ\tBLINK_DURATION\tPERCLOS");
    EXPECT_EQ(eodtest::valueLine(sampleClosure()), "0.25\t1\t0.5\t0\t0.75\t1\t0.3\t0.15\t0.125");
}

TEST(EyeClosureOutputData, EveryTruncationIsRejected) {
    eodtest::expectEveryTruncationRejected<EyeClosureOutputData>(encode(sampleClosure()));
}

TEST(PupilOutputData, EncodesItsFieldsInWireOrder) {
    EXPECT_EQ(eodtest::engineSpecificDataBytes(PupilOutputData()), 32u);
    Bytes expected = {14, 0x00, 34, 0x01};
    appendFloats(expected, {-0.03f, 0.01f, 0.6f, 0.004f, 0.031f, 0.011f, 0.61f, 0.0045f});
    expected.push_back(0);
    EXPECT_EQ(encode(samplePupil()), expected);
}

TEST(PupilOutputData, RoundTripsFieldForField) {
    eodtest::expectRoundTripsFieldForField(samplePupil(), expectSameFields);
}

TEST(PupilOutputData, FailedSettersThrowAndChangeNothing) {
    const char* const module = "pupiloutputdata";
    const char* const eye_message = "eye_id neither LEFT_EYE nor RIGHT_EYE";
    PupilOutputData pupil = samplePupil();
    const Bytes before = encode(pupil);
    EXPECT_USAGE_ERROR(pupil.setPupilPosition(BOTH_EYES, {1, 2, 3}), module, eye_message);
    EXPECT_USAGE_ERROR(pupil.setPupilDiameter(3, 1), module, eye_message);
    EXPECT_USAGE_ERROR(pupil.pupilPosition(BOTH_EYES), module, eye_message);
    EXPECT_USAGE_ERROR(pupil.pupilDiameter(-1), module, eye_message);
    EXPECT_USAGE_ERROR(pupil.setPupilPosition(LEFT_EYE, {1, 2}), module,
                       "pupil_position 3D point expected");
    EXPECT_USAGE_ERROR(pupil.setPupilDiameter(LEFT_EYE, -0.001f), module,
                       "pupil_diameter less than zero");
    EXPECT_USAGE_ERROR(pupil.setPupilDiameter(LEFT_EYE, NaN), module,
                       "pupil_diameter less than zero");
    EXPECT_EQ(encode(pupil), before);
    pupil.setPupilDiameter(LEFT_EYE, 0.0f);
    EXPECT_EQ(pupil.pupilDiameter(LEFT_EYE), 0.0f);
}

TEST(PupilOutputData, PrintsItsColumns) {
    EXPECT_EQ(eodtest::headerLine(PupilOutputData()),
              "PUPIL_R_X\tPUPIL_R_Y\tPUPIL_R_Z\tPUPIL_R_DIAM\tPUPIL_L_X\tPUPIL_L_Y\tPUPIL_L_Z\t"
              "PUPIL_L_DIAM");
    EXPECT_EQ(eodtest::valueLine(samplePupil()),
              "-0.03\t0.01\t0.6\t0.004\t0.031\t0.011\t0.61\t0.0045");
}

TEST(PupilOutputData, EveryTruncationIsRejected) {
    eodtest::expectEveryTruncationRejected<PupilOutputData>(encode(samplePupil()));
}

TEST(EyeOutputData, WithoutChildrenItIsAHeaderAndNoOwnBytes) {
    const EyeOutputData eyes;
    EXPECT_EQ(eyes.objectID(), 15);
    EXPECT_EQ(eodtest::engineSpecificDataBytes(eyes), 0u);
    EXPECT_EQ(encode(eyes), (Bytes{15, 0x00, 0x02, 0x01, 0x00}));
    EXPECT_FALSE(eyes.eyeClosureOutputData());
    EXPECT_FALSE(eyes.gazeOutputData());
    EXPECT_FALSE(eyes.pupilOutputData());
    EXPECT_EQ(eodtest::headerLine(eyes), "");
}

TEST(EyeOutputData, CarriesItsThreeChildrenThroughAFrameOfBytes) {
    EyeOutputData eyes;
    eyes.addSubObject(boost::make_shared<PupilOutputData>(samplePupil()));
    eyes.addSubObject(boost::make_shared<EyeClosureOutputData>(sampleClosure()));
    eyes.addSubObject(boost::make_shared<GazeOutputData>());
    const Bytes bytes = encode(eyes);
    // Children follow the count in ascending object id order: 12, 13, 14.
    EXPECT_EQ(bytes[5], 12);
    EXPECT_EQ(bytes[5 + 3 + 35], 13);
    EXPECT_EQ(bytes[5 + 3 + 35 + 3 + 46], 14);

    const auto decoded = eodtest::decodeBothWays<EyeOutputData>(bytes);
    for (const EyeOutputData& read : {decoded.first, decoded.second}) {
        ASSERT_TRUE(read.eyeClosureOutputData());
        ASSERT_TRUE(read.gazeOutputData());
        ASSERT_TRUE(read.pupilOutputData());
        expectSameFields(*read.eyeClosureOutputData(), sampleClosure());
        expectSameFields(*read.pupilOutputData(), samplePupil());
    }

    // The mutable accessors hand out the stored child.
    eyes.pupilOutputData()->setPupilDiameter(RIGHT_EYE, 0.007f);
    EXPECT_EQ(eyes.pupilOutputData()->pupilDiameter(RIGHT_EYE), 0.007f);
    // Copies are deep.
    EyeOutputData copied;
    copied.copyFrom(eyes);
    eyes.pupilOutputData()->setPupilDiameter(RIGHT_EYE, 0.001f);
    EXPECT_EQ(copied.pupilOutputData()->pupilDiameter(RIGHT_EYE), 0.007f);

    eodtest::expectEveryTruncationRejected<EyeOutputData>(bytes);
}

TEST(EyeRecords, RandomBytesNeverCrashTheReaders) {
    for (char id : {HeadOutputData::THIS_OBJECT_ID, EyeClosureOutputData::THIS_OBJECT_ID,
                    GazeOutputData::THIS_OBJECT_ID, PupilOutputData::THIS_OBJECT_ID,
                    EyeOutputData::THIS_OBJECT_ID, HeadOutputDataV2::THIS_OBJECT_ID}) {
        SCOPED_TRACE(int(id));
        eodtest::expectGarbageSurvived(id, 20240611, 2000, 140);
    }
}
