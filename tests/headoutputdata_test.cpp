// Both generations of the head record.

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/utils/geomutils.h>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;

namespace {

HeadOutputData sampleV1() {
    HeadOutputData head;
    head.setTrackingState(-3);
    head.setHeadPosition({0.1f, -0.2f, 0.65f});
    head.setHeadRotation({0.01f, -1.5f, 3.0f});
    head.setHeadPositionConfidence(0.75f);
    head.setModelQualityLevel(127);
    head.setHeadEyeballPos(RIGHT_EYE, {-0.03f, 0.01f, 0.6f});
    head.setHeadEyeballPos(LEFT_EYE, {0.031f, 0.011f, 0.61f});
    return head;
}

HeadOutputDataV2 sampleV2() {
    HeadOutputDataV2 head;
    head.setTrackingState(true);
    head.setHeadPosition({0.1, -0.2, 0.65});
    head.setHeadRotation({0.2, -0.4, 1.3});
    head.setHeadPositionConfidence(0.125);
    head.setModelQualityLevel(-128);
    head.setHeadEyeballPos(RIGHT_EYE, {-0.03, 0.01, 0.6});
    head.setHeadEyeballPos(LEFT_EYE, {0.031, 0.011, 0.61});
    return head;
}

void expectSameFields(const HeadOutputData& a, const HeadOutputData& b) {
    EXPECT_EQ(a.trackingState(), b.trackingState());
    EXPECT_EQ(a.headPosition(), b.headPosition());
    EXPECT_EQ(a.headRotation(), b.headRotation());
    EXPECT_EQ(a.headPositionConfidence(), b.headPositionConfidence());
    EXPECT_EQ(a.modelQualityLevel(), b.modelQualityLevel());
    EXPECT_EQ(a.headEyeBallPos(RIGHT_EYE), b.headEyeBallPos(RIGHT_EYE));
    EXPECT_EQ(a.headEyeBallPos(LEFT_EYE), b.headEyeBallPos(LEFT_EYE));
}

void expectSameFields(const HeadOutputDataV2& a, const HeadOutputDataV2& b) {
    EXPECT_EQ(a.isTracking(), b.isTracking());
    EXPECT_EQ(a.headPosition(), b.headPosition());
    EXPECT_EQ(a.headRotationQuaternion(), b.headRotationQuaternion());
    EXPECT_EQ(a.headRotation(), b.headRotation());
    EXPECT_EQ(a.headPositionConfidence(), b.headPositionConfidence());
    EXPECT_EQ(a.modelQualityLevel(), b.modelQualityLevel());
    EXPECT_EQ(a.headEyeBallPos(RIGHT_EYE), b.headEyeBallPos(RIGHT_EYE));
    EXPECT_EQ(a.headEyeBallPos(LEFT_EYE), b.headEyeBallPos(LEFT_EYE));
}

template <class T>
void appendAll(Bytes& out, const std::vector<T>& values) {
    for (T v : values) detail::appendNumber(out, v);
}

}  // namespace

TEST(HeadOutputData, FreshRecordIsAllZero) {
    const HeadOutputData head;
    EXPECT_EQ(head.objectID(), 11);
    EXPECT_EQ(+HeadOutputData::HEAD_OUTPUT_DATA_ID, 11);
    EXPECT_EQ(eodtest::engineSpecificDataBytes(head), 54u);
    EXPECT_EQ(head.trackingState(), 0);
    EXPECT_EQ(head.headPosition(), Floats(3));
    EXPECT_EQ(head.headRotation(), Floats(3));
    EXPECT_EQ(head.headPositionConfidence(), 0.0f);
    EXPECT_EQ(head.headEyeBallPos(LEFT_EYE), Floats(3));
}

TEST(HeadOutputData, EncodesItsFieldsInWireOrder) {
    const HeadOutputData head = sampleV1();
    Bytes expected = {11, 0x00, 56, 0x01};
    detail::appendNumber(expected, char(-3));
    appendAll(expected, Floats{0.1f, -0.2f, 0.65f, 0.01f, -1.5f, 3.0f, 0.75f});
    detail::appendNumber(expected, char(127));
    appendAll(expected, Floats{-0.03f, 0.01f, 0.6f, 0.031f, 0.011f, 0.61f});
    expected.push_back(0);  // no sub-records
    EXPECT_EQ(encode(head), expected);
}

TEST(HeadOutputData, RoundTripsFieldForField) {
    eodtest::expectRoundTripsFieldForField(sampleV1(), expectSameFields);
}

TEST(HeadOutputData, FailedSettersThrowAndChangeNothing) {
    const char* const module = "headoutputdata";
    HeadOutputData head = sampleV1();
    const Bytes before = encode(head);
    EXPECT_USAGE_ERROR(head.setHeadPosition({1, 2}), module, "expected 3D vector");
    EXPECT_USAGE_ERROR(head.setHeadRotation({1, 2, 3, 4}), module, "3D vector expected");
    for (float bad : {1.0000001f, -0.0000001f, std::numeric_limits<float>::quiet_NaN()}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(head.setHeadPositionConfidence(bad), module,
                           "head_confidence not in the range 0..1");
    }
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(BOTH_EYES, {1, 2, 3}), module,
                       "eye_id is neither LEFT_EYE nor RIGHT_EYE");
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(-1, {1, 2, 3}), module,
                       "eye_id is neither LEFT_EYE nor RIGHT_EYE");
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(LEFT_EYE, {1, 2}), module,
                       "eyeball_pos is expected to be a 3D point");
    EXPECT_USAGE_ERROR(head.headEyeBallPos(BOTH_EYES), module,
                       "eye_id is either LEFT_EYE or RIGHT_EYE");
    EXPECT_EQ(encode(head), before);

    head.setHeadPositionConfidence(0.0f);
    EXPECT_EQ(head.headPositionConfidence(), 0.0f);
    head.setHeadPositionConfidence(1.0f);
    EXPECT_EQ(head.headPositionConfidence(), 1.0f);
}

TEST(HeadOutputData, PrintsItsColumns) {
    EXPECT_EQ(eodtest::headerLine(HeadOutputData()),
              "TRACK_STATE\tHPOS_FILT_X\tHPOS_FILT_Y\tHPOS_FILT_Z\tHROT_FILT_X\tHROT_FILT_Y\t"
              "HROT_FILT_Z\tHPOS_CONF\tMODEL_QUAL\tH_EYEBALL_R_X\tH_EYEBALL_R_Y\tH_EYEBALL_R_Z\t"
              "H_EYEBALL_L_X\tH_EYEBALL_L_Y\tH_EYEBALL_L_Z");
    EXPECT_EQ(eodtest::valueLine(sampleV1()),
              "-3\t0.1\t-0.2\t0.65\t0.01\t-1.5\t3\t0.75\t127\t-0.03\t0.01\t0.6\t0.031\t0.011\t"
              "0.61");
}

TEST(HeadOutputData, EveryTruncationIsRejected) {
    eodtest::expectEveryTruncationRejected<HeadOutputData>(encode(sampleV1()));
}

TEST(HeadOutputDataV2, FreshRecordHoldsTheIdentityRotation) {
    const HeadOutputDataV2 head;
    EXPECT_EQ(head.objectID(), 16);
    EXPECT_EQ(+HeadOutputDataV2::HEAD_OUTPUT_DATA_V2_ID, 16);
    EXPECT_EQ(eodtest::engineSpecificDataBytes(head), 114u);
    EXPECT_FALSE(head.isTracking());
    EXPECT_EQ(head.headRotationQuaternion(), (Doubles{1, 0, 0, 0}));
    EXPECT_EQ(head.headRotation(), (Doubles{0, 0, 0}));

    const Bytes bytes = encode(head);
    ASSERT_EQ(bytes.size(), 3u + 1 + 114 + 1);
    // Header, flag, tracking state and three position doubles come first.
    const Bytes quaternion(bytes.begin() + 29, bytes.begin() + 29 + 32);
    Bytes expected = {0x3F, 0xF0, 0, 0, 0, 0, 0, 0};
    expected.resize(32, 0);
    EXPECT_EQ(quaternion, expected);
}

TEST(HeadOutputDataV2, EncodesItsFieldsInWireOrder) {
    const HeadOutputDataV2 head = sampleV2();
    Bytes expected = {16, 0x00, 116, 0x01, 0x01};
    appendAll(expected, Doubles{0.1, -0.2, 0.65});
    appendAll(expected, utils::fromEulerAngles({0.2, -0.4, 1.3}));
    detail::appendNumber(expected, 0.125);
    detail::appendNumber(expected, char(-128));
    appendAll(expected, Doubles{-0.03, 0.01, 0.6, 0.031, 0.011, 0.61});
    expected.push_back(0);
    EXPECT_EQ(encode(head), expected);
}

TEST(HeadOutputDataV2, RotationFormsStayConsistent) {
    HeadOutputDataV2 head;
    // Outside the range toEulerAngles returns, so reading yields other angles for the same
    // rotation.
    const Doubles euler = {4.0, 0.3, -0.2};
    head.setHeadRotation(euler);
    EXPECT_EQ(head.headRotation(), euler);
    EXPECT_EQ(head.headRotationQuaternion(), utils::fromEulerAngles(euler));

    const auto decoded = eodtest::decodeBothWays<HeadOutputDataV2>(encode(head));
    for (const HeadOutputDataV2& read : {decoded.first, decoded.second}) {
        EXPECT_EQ(read.headRotationQuaternion(), head.headRotationQuaternion());
        EXPECT_EQ(read.headRotation(), utils::toEulerAngles(head.headRotationQuaternion()));
        EXPECT_NE(read.headRotation(), euler);
    }

    // A quaternion is stored as given, not normalised.
    const Doubles q = {0.0, 0.0, 0.0, 2.0};
    head.setHeadRotationQuaternion(q);
    EXPECT_EQ(head.headRotationQuaternion(), q);
    EXPECT_EQ(head.headRotation(), utils::toEulerAngles(q));
}

TEST(HeadOutputDataV2, RoundTripsFieldForField) {
    const HeadOutputDataV2 head = sampleV2();
    const auto decoded = eodtest::decodeBothWays<HeadOutputDataV2>(encode(head));
    // The angles set were inside toEulerAngles' ranges, so they come back within rounding.
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(decoded.first.headRotation()[i], head.headRotation()[i], 1e-12);
    }
    HeadOutputDataV2 expected = head;
    expected.setHeadRotationQuaternion(head.headRotationQuaternion());
    expectSameFields(decoded.first, expected);
    expectSameFields(decoded.second, expected);
    HeadOutputDataV2 assigned;
    assigned.copyFrom(head);
    expectSameFields(assigned, head);
    expectSameFields(*std::unique_ptr<HeadOutputDataV2>(head.clone()), head);
}

TEST(HeadOutputDataV2, FailedSettersThrowAndChangeNothing) {
    const char* const module = "headoutputdatav2";
    HeadOutputDataV2 head = sampleV2();
    const HeadOutputDataV2 before = head;
    EXPECT_USAGE_ERROR(head.setHeadPosition({1, 2, 3, 4}), module, "pos expected to be 3D point");
    EXPECT_USAGE_ERROR(head.setHeadRotation({1, 2}), module,
                       "rotation expected to be 3D euler angle");
    EXPECT_USAGE_ERROR(head.setHeadRotationQuaternion({1, 0, 0}), module,
                       "rotation expected to be quaternion for 3D space (i.e. 4 dimensions)");
    for (double bad : {1.0000001, -0.0000001, std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(head.setHeadPositionConfidence(bad), module,
                           "head_confidencec outside the range 0..1");
    }
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(BOTH_EYES, {1, 2, 3}), module,
                       "eye_id neither LEFT_EYE nor RIGHT_EYE");
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(RIGHT_EYE, {1, 2}), module,
                       "eyeball_pos expected to be 3D point");
    EXPECT_USAGE_ERROR(head.setHeadEyeballPos(RIGHT_EYE, {1, 2, 3, 4}), module,
                       "eyeball_pos expected to be 3D point");
    EXPECT_USAGE_ERROR(head.headEyeBallPos(BOTH_EYES), module,
                       "eye_id is neither LEFT_EYE nor RIGHT_EYE");
    expectSameFields(head, before);

    head.setHeadPositionConfidence(0.0);
    head.setHeadPositionConfidence(1.0);
    EXPECT_EQ(head.headPositionConfidence(), 1.0);
}

TEST(HeadOutputDataV2, PrintsTheQuaternionNotTheAngles) {
    EXPECT_EQ(eodtest::headerLine(HeadOutputDataV2()),
              "TRACK_STATE\tHPOS_FILT_X\tHPOS_FILT_Y\tHPOS_FILT_Z\tHROT_FILT_Q0\tHROT_FILT_Q1\t"
              "HROT_FILT_Q2\tHROT_FILT_Q3\tHPOS_CONF\tMODEL_QUAL\tH_EYEBALL_R_X\tH_EYEBALL_R_Y\t"
              "H_EYEBALL_R_Z\tH_EYEBALL_L_X\tH_EYEBALL_L_Y\tH_EYEBALL_L_Z");
    HeadOutputDataV2 head = sampleV2();
    head.setHeadRotationQuaternion({0.5, -0.5, 0.25, 1});
    EXPECT_EQ(eodtest::valueLine(head),
              "1\t0.1\t-0.2\t0.65\t0.5\t-0.5\t0.25\t1\t0.125\t-128\t-0.03\t0.01\t0.6\t0.031\t"
              "0.011\t0.61");
}

TEST(HeadOutputDataV2, EveryTruncationIsRejectedWithTheAnglesInStep) {
    eodtest::expectEveryTruncationRejected<HeadOutputDataV2>(
        encode(sampleV2()), [](const HeadOutputDataV2& head) {
            EXPECT_EQ(head.headRotation(), utils::toEulerAngles(head.headRotationQuaternion()));
        });
}

TEST(HeadOutputDataV2, TakesAnyQuaternionFromTheWire) {
    // NaN, infinities and zero must decode without trouble; the angles follow the quaternion.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (const Doubles& q :
         {Doubles{nan, 0, 0, 0}, Doubles{inf, -inf, 0, 1}, Doubles{0, 0, 0, 0}}) {
        Bytes bytes = encode(HeadOutputDataV2());
        Bytes field;
        appendAll(field, q);
        std::copy(field.begin(), field.end(), bytes.begin() + 29);
        HeadOutputDataV2 head;
        int pos = 0;
        ASSERT_TRUE(head.unSerialize(bytes, pos));
        EXPECT_EQ(encode(head), bytes);
        EXPECT_EQ(head.headRotation().size(), 3u);
    }
}
