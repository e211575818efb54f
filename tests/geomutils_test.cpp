#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <eod/utils/geomutils.h>

#include "recordtesting.h"

using namespace tq::eod::utils;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;
using Matrix = std::vector<std::vector<double>>;

namespace {

const char* const MODULE = "utils/geomutils";
const char* const PARALLEL = "tq::eod::utils::rayIntersectionPoint : rays are parallel";
const char* const DIVERGING = "tq::eod::utils::rayIntersectionPoint : rays are diverging";
const double PI = std::acos(-1.0);

void expectNear(const Doubles& actual, const Doubles& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
    }
}

void expectNear(const Matrix& actual, const Matrix& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE("row " + std::to_string(i));
        expectNear(actual[i], expected[i], tolerance);
    }
}

// q and -q are the same rotation.
void expectSameRotation(const Doubles& q1, const Doubles& q2, double tolerance) {
    const double sign = q1[0] * q2[0] + q1[1] * q2[1] + q1[2] * q2[2] + q1[3] * q2[3] < 0 ? -1 : 1;
    expectNear(q1, {sign * q2[0], sign * q2[1], sign * q2[2], sign * q2[3]}, tolerance);
}

Doubles steps(double first, double last, int count) {
    Doubles values;
    for (int i = 0; i < count; ++i) values.push_back(first + (last - first) * i / (count - 1));
    return values;
}

std::string angles(const Doubles& e) {
    std::string text;
    for (double v : e) text += std::to_string(v) + " ";
    return text;
}

// A grid over the Euler angle ranges that toEulerAngles returns, kept 0.01 away from the
// range ends and from gimbal lock.
std::vector<Doubles> eulerGrid() {
    std::vector<Doubles> grid;
    for (double x : steps(-3.13, 3.13, 11)) {
        for (double y : steps(-PI / 2 + 0.01, PI / 2 - 0.01, 9)) {
            for (double z : steps(-3.13, 3.13, 11)) grid.push_back({x, y, z});
        }
    }
    return grid;
}

}  // namespace

TEST(GeomUtilsError, IsAnEODErrorNamedAfterItsClass) {
    const GeomUtilsError error("abc");
    EXPECT_STREQ(error.what(), "abc");
    EXPECT_STREQ(error.className(), "GeomUtilsError");
    const tq::eod::EODError& base = error;
    EXPECT_STREQ(base.className(), "GeomUtilsError");
}

TEST(VectorArithmetic, WorksElementByElement) {
    const Floats a = {1, 2, 3}, b = {4, 5, 7};
    EXPECT_EQ(a + b, (Floats{5, 7, 10}));
    EXPECT_EQ(b - a, (Floats{3, 3, 4}));
    EXPECT_EQ(-a, (Floats{-1, -2, -3}));
    EXPECT_EQ(2.0f * a, (Floats{2, 4, 6}));
    EXPECT_EQ(innerProduct(a, b), 35.0f);
    EXPECT_EQ(length(Floats{3, 4}), 5.0f);
    EXPECT_EQ(unitVector(Floats{0, 3, 4}), (Floats{0, 0.6f, 0.8f}));
}

TEST(VectorArithmetic, CrossProductIsRightHanded) {
    EXPECT_EQ(crossProduct({1, 0, 0}, {0, 1, 0}), (Floats{0, 0, 1}));
    EXPECT_EQ(crossProduct({0, 1, 0}, {1, 0, 0}), (Floats{0, 0, -1}));
    EXPECT_EQ(crossProduct({1, 2, 3}, {4, 5, 6}), (Floats{-3, 6, -3}));
}

TEST(VectorArithmetic, RefusesMismatchedSizesAndZeroLength) {
    const Floats v2 = {1, 2}, v3 = {1, 2, 3};
    EXPECT_USAGE_ERROR(v2 + v3, MODULE, "vectors of different dimensions");
    EXPECT_USAGE_ERROR(v2 - v3, MODULE, "vectors of different dimensions");
    EXPECT_USAGE_ERROR(innerProduct(v2, v3), MODULE, "vectors of different lengths");
    EXPECT_USAGE_ERROR(crossProduct(v2, v3), MODULE, "expect 3D direction vectors");
    EXPECT_USAGE_ERROR(crossProduct(v3, v2), MODULE, "expect 3D direction vectors");
    EXPECT_USAGE_ERROR(unitVector({0, 0, 0}), MODULE, "direction has zero length");
    // Below the float machine epsilon counts as zero; just above it does not.
    const float eps = std::numeric_limits<float>::epsilon();
    EXPECT_USAGE_ERROR(unitVector({eps / 2, 0, 0}), MODULE, "direction has zero length");
    EXPECT_EQ(unitVector({2 * eps, 0, 0}), (Floats{1, 0, 0}));
}

TEST(RayClosestApproach, CrossingRaysMeetAtTheirCommonPoint) {
    const Floats o1 = {0, 0, 0}, d1 = {1, 0, 1}, o2 = {2, 0, 0}, d2 = {-1, 0, 1};
    float s = 0, t = 0;
    coefficientsOfRaysClosestApproach(o1, d1, o2, d2, s, t);
    EXPECT_EQ(s, 1.0f);
    EXPECT_EQ(t, 1.0f);
    Floats p1, p2;
    pointsOfRaysClosestApproach(o1, d1, o2, d2, p1, p2);
    EXPECT_EQ(p1, (Floats{1, 0, 1}));
    EXPECT_EQ(p2, (Floats{1, 0, 1}));
    EXPECT_EQ(rayIntersectionPoint(o1, d1, o2, d2), (Floats{1, 0, 1}));
}

TEST(RayClosestApproach, SkewRaysGiveTheMidpointOfTheShortestSegment) {
    // Along x from the origin, and along y through (2, *, 1): closest at (2,0,0) and (2,0,1).
    const Floats o1 = {0, 0, 0}, d1 = {1, 0, 0}, o2 = {2, -1, 1}, d2 = {0, 1, 0};
    Floats p1, p2;
    pointsOfRaysClosestApproach(o1, d1, o2, d2, p1, p2);
    EXPECT_EQ(p1, (Floats{2, 0, 0}));
    EXPECT_EQ(p2, (Floats{2, 0, 1}));
    EXPECT_EQ(rayIntersectionPoint(o1, d1, o2, d2), (Floats{2, 0, 0.5f}));
    // Direction lengths change the coefficients, not the points.
    float s = 0, t = 0;
    coefficientsOfRaysClosestApproach(o1, 4.0f * d1, o2, 0.5f * d2, s, t);
    EXPECT_EQ(s, 0.5f);
    EXPECT_EQ(t, 2.0f);
}

TEST(RayClosestApproach, RefusesParallelAndDivergingRaysInEveryForm) {
    struct Case {
        const char* name;
        Floats o1, d1, o2, d2;
        const char* message;
    };
    const Case cases[] = {
        {"same direction", {0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, 1}, PARALLEL},
        {"opposite directions", {0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, -2}, PARALLEL},
        {"zero direction", {0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0, 1}, PARALLEL},
        {"closest behind the second origin", {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 1, 0},
         DIVERGING},
        {"closest behind the first origin", {0, 1, 0}, {-1, 1, 0}, {0, 0, 0}, {1, 0, 0},
         DIVERGING},
        {"closest exactly at the first origin", {0, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0},
         DIVERGING},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        float s = -7, t = -7;
        try {
            coefficientsOfRaysClosestApproach(c.o1, c.d1, c.o2, c.d2, s, t);
            ADD_FAILURE() << "no GeomUtilsError";
        } catch (const GeomUtilsError& e) {
            EXPECT_STREQ(e.what(), c.message);
        }
        EXPECT_EQ(s, -7);
        EXPECT_EQ(t, -7);
        Floats p1, p2;
        EXPECT_THROW(pointsOfRaysClosestApproach(c.o1, c.d1, c.o2, c.d2, p1, p2),
                     GeomUtilsError);
        EXPECT_TRUE(p1.empty() && p2.empty());
        EXPECT_THROW(rayIntersectionPoint(c.o1, c.d1, c.o2, c.d2), GeomUtilsError);
    }
}

TEST(RayClosestApproach, RefusesVectorsThatAreNot3D) {
    const Floats v3 = {0, 0, 1}, v2 = {0, 1};
    EXPECT_USAGE_ERROR(rayIntersectionPoint(v2, v3, v3, v3), MODULE, "origin1.size() == 3");
    EXPECT_USAGE_ERROR(rayIntersectionPoint(v3, v2, v3, v3), MODULE, "direction1.size() == 3");
    EXPECT_USAGE_ERROR(rayIntersectionPoint(v3, v3, v2, v3), MODULE, "origin2.size() == 3");
    EXPECT_USAGE_ERROR(rayIntersectionPoint(v3, v3, v3, v2), MODULE, "direction2.size() == 3");
    float s = 0, t = 0;
    EXPECT_USAGE_ERROR(coefficientsOfRaysClosestApproach(v2, v2, v2, v2, s, t), MODULE,
                       "origin1.size() == 3");
}

TEST(VectorIntersectionAngle, IsInRadiansAndDefinedForParallelVectors) {
    EXPECT_FLOAT_EQ(vectorIntersectionAngle({1, 0, 0}, {0, 1, 0}), float(PI / 2));
    EXPECT_FLOAT_EQ(vectorIntersectionAngle({1, 0, 0}, {-3, 0, 0}), float(PI));
    EXPECT_FLOAT_EQ(vectorIntersectionAngle({1, 0, 1}, {0, 0, 5}), float(PI / 4));
    EXPECT_EQ(vectorIntersectionAngle({1, 2, 3}, {2, 4, 6}), 0.0f);
    EXPECT_EQ(vectorIntersectionAngle({0.1f, 0.2f, 0.3f}, {0.1f, 0.2f, 0.3f}), 0.0f);
    EXPECT_TRUE(std::isnan(vectorIntersectionAngle({0, 0, 0}, {1, 0, 0})));
    EXPECT_USAGE_ERROR(vectorIntersectionAngle({1, 0}, {1, 0, 0}), MODULE,
                       "direction1.size() == 3");
    EXPECT_USAGE_ERROR(vectorIntersectionAngle({1, 0, 0}, {1, 0}), MODULE,
                       "direction2.size() == 3");
}

TEST(Rotations, KnownAnswersFixTheConvention) {
    const double h = std::sqrt(0.5);
    expectNear(fromEulerAngles({0, 0, PI / 2}), {h, 0, 0, h}, 1e-15);
    expectNear(fromEulerAngles({PI / 2, 0, 0}), {h, h, 0, 0}, 1e-15);
    // x acts first: x = pi/2 turns the z axis to -y, then z = pi/2 turns -y to +x; the x
    // axis is kept by the x turn and taken to +y by the z turn.
    expectNear(eulerAnglesToRotationMatrix({PI / 2, 0, PI / 2}),
               {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}, 1e-15);
    expectNear(eulerAnglesToRotationMatrix({0, PI / 2, 0}), {{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}},
               1e-15);
    expectNear(directionFromPitchYaw({0, 0}), {0, 0, 1}, 0);
    expectNear(directionFromPitchYaw({PI / 2, 0}), {0, -1, 0}, 1e-15);
    expectNear(directionFromPitchYaw({0, PI / 2}), {1, 0, 0}, 1e-15);
}

TEST(Rotations, EulerQuaternionAndMatrixFormsAgreeOverAGrid) {
    for (const Doubles& e : eulerGrid()) {
        SCOPED_TRACE(angles(e));
        const Doubles q = fromEulerAngles(e);
        EXPECT_NEAR(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3], 1.0, 1e-14);
        expectNear(toEulerAngles(q), e, 1e-9);
        const Matrix m = eulerAnglesToRotationMatrix(e);
        expectNear(quaternionToRotationMatrix(q), m, 1e-12);
        expectNear(rotMatrixToEulerAngles(m), e, 1e-9);
    }
}

TEST(Rotations, DirectionIsTheRotatedZAxisOfPitchAndYaw) {
    for (double pitch : steps(-1.5, 1.5, 13)) {
        for (double yaw : steps(-3.1, 3.1, 13)) {
            SCOPED_TRACE(angles({pitch, yaw}));
            const Doubles d = directionFromPitchYaw({pitch, yaw});
            expectNear(d, rotMatrixToDirection(eulerAnglesToRotationMatrix({pitch, yaw, 0})),
                       1e-15);
            EXPECT_NEAR(d[0] * d[0] + d[1] * d[1] + d[2] * d[2], 1.0, 1e-15);
            expectNear(pitchYawFromDirection(d), {pitch, yaw}, 1e-9);
            // The length of the direction does not matter.
            expectNear(pitchYawFromDirection({7 * d[0], 7 * d[1], 7 * d[2]}), {pitch, yaw}, 1e-9);
        }
    }
    expectNear(pitchYawFromDirection({0, 0, 0}), {0, 0}, 0);
}

TEST(Rotations, GimbalLockKeepsTheRotation) {
    for (double y : {PI / 2, -PI / 2}) {
        for (double x : steps(-3, 3, 7)) {
            for (double z : steps(-3, 3, 7)) {
                SCOPED_TRACE(angles({x, y, z}));
                const Doubles q = fromEulerAngles({x, y, z});
                const Doubles e = toEulerAngles(q);
                EXPECT_EQ(e[2], 0.0);
                EXPECT_NEAR(e[1], y, 1e-7);
                expectSameRotation(fromEulerAngles(e), q, 1e-7);
                const Doubles from_matrix =
                    rotMatrixToEulerAngles(eulerAnglesToRotationMatrix({x, y, z}));
                expectSameRotation(fromEulerAngles(from_matrix), q, 1e-7);
            }
        }
    }
}

TEST(Rotations, QuaternionsNeedNotBeUnitLength) {
    const Doubles q = fromEulerAngles({0.3, -0.2, 1.1});
    const Doubles scaled = {2.5 * q[0], 2.5 * q[1], 2.5 * q[2], 2.5 * q[3]};
    expectNear(toEulerAngles(scaled), {0.3, -0.2, 1.1}, 1e-12);
    expectNear(quaternionToRotationMatrix(scaled), eulerAnglesToRotationMatrix({0.3, -0.2, 1.1}),
               1e-12);
    // The zero quaternion is no rotation.
    expectNear(toEulerAngles({0, 0, 0, 0}), {0, 0, 0}, 0);
    expectNear(quaternionToRotationMatrix({0, 0, 0, 0}), {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0);
}

TEST(Rotations, RefuseWrongSizes) {
    const Matrix two_rows = {{1, 0, 0}, {0, 1, 0}};
    const Matrix short_row = {{1, 0, 0}, {0, 1}, {0, 0, 1}};
    EXPECT_USAGE_ERROR(fromEulerAngles({0, 0}), MODULE, "expected 3D euler_angles");
    EXPECT_USAGE_ERROR(toEulerAngles({1, 0, 0}), MODULE, "expected q to be a 4 dimensions");
    EXPECT_USAGE_ERROR(quaternionToRotationMatrix({1, 0, 0, 0, 0}), MODULE,
                       "expected q to be a 4 dimensions");
    EXPECT_USAGE_ERROR(eulerAnglesToRotationMatrix({0, 0, 0, 0}), MODULE,
                       "3D euler angle expected");
    EXPECT_USAGE_ERROR(rotMatrixToEulerAngles(two_rows), MODULE, "3x3 matrix expected");
    EXPECT_USAGE_ERROR(rotMatrixToEulerAngles(short_row), MODULE, "3x3 matrix expected");
    EXPECT_USAGE_ERROR(rotMatrixToDirection(short_row), MODULE, "3x3 matrix expected");
    EXPECT_USAGE_ERROR(directionFromPitchYaw({0, 0, 0}), MODULE, "expected vector of size 2");
    EXPECT_USAGE_ERROR(pitchYawFromDirection({0, 1}), MODULE, "3D vector expected");
}

TEST(RayPlaneIntersect, GivesThePointAndItsPlaneCoordinates) {
    // A 2 x 2 screen in the plane z = 1, seen from the origin.
    const Doubles tl = {-1, 1, 1}, tr = {1, 1, 1}, bl = {-1, -1, 1};
    Doubles point, uv;
    ASSERT_TRUE(rayPlaneIntersect({0, 0, 0}, {0, 0, 1}, tl, tr, bl, point, uv));
    expectNear(point, {0, 0, 1}, 0);
    expectNear(uv, {0.5, 0.5}, 0);
    ASSERT_TRUE(rayPlaneIntersect({0, 0, 0}, {0.5, 0.5, 1}, tl, tr, bl, point, uv));
    expectNear(point, {0.5, 0.5, 1}, 1e-15);
    expectNear(uv, {0.75, 0.25}, 1e-15);
    // Off the rectangle is still on the plane.
    ASSERT_TRUE(rayPlaneIntersect({0, 0, -1}, {3, 0, 2}, tl, tr, bl, point, uv));
    expectNear(point, {3, 0, 1}, 1e-15);
    expectNear(uv, {2, 0.5}, 1e-15);
    // An origin on the plane is its own intersection.
    ASSERT_TRUE(rayPlaneIntersect({1, 1, 1}, {0, 1, 1}, tl, tr, bl, point, uv));
    expectNear(point, {1, 1, 1}, 0);
    expectNear(uv, {1, 0}, 0);
}

TEST(RayPlaneIntersect, ReturnsFalseWithoutAPointInFront) {
    const Doubles tl = {-1, 1, 1}, tr = {1, 1, 1}, bl = {-1, -1, 1};
    struct Case {
        const char* name;
        Doubles origin, direction, tl, tr, bl;
    };
    const Case cases[] = {
        {"parallel", {0, 0, 0}, {1, 0, 0}, tl, tr, bl},
        {"lying in the plane", {0, 0, 1}, {1, 1, 0}, tl, tr, bl},
        {"behind the origin", {0, 0, 0}, {0, 0, -1}, tl, tr, bl},
        {"zero direction", {0, 0, 0}, {0, 0, 0}, tl, tr, bl},
        {"corners on one line", {0, 0, 0}, {0, 0, 1}, tl, tr, {3, 1, 1}},
        {"NaN", {0, 0, 0}, {0, 0, std::nan("")}, tl, tr, bl},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Doubles point = {7}, uv = {7};
        EXPECT_FALSE(rayPlaneIntersect(c.origin, c.direction, c.tl, c.tr, c.bl, point, uv));
        EXPECT_EQ(point, Doubles{7});
        EXPECT_EQ(uv, Doubles{7});
    }
}

TEST(RayPlaneIntersect, ChecksEachArgumentInOrder) {
    const Doubles v3 = {0, 0, 1}, v2 = {0, 1};
    Doubles point, uv;
    EXPECT_USAGE_ERROR(rayPlaneIntersect(v2, v2, v2, v2, v2, point, uv), MODULE,
                       "ray_origin expected to be 3D");
    EXPECT_USAGE_ERROR(rayPlaneIntersect(v3, v2, v2, v2, v2, point, uv), MODULE,
                       "direction expected to be 3D");
    EXPECT_USAGE_ERROR(rayPlaneIntersect(v3, v3, v2, v2, v2, point, uv), MODULE,
                       "plane_top_left expected to be 3D");
    EXPECT_USAGE_ERROR(rayPlaneIntersect(v3, v3, v3, v2, v2, point, uv), MODULE,
                       "plane_top_right expected to be 3D");
    EXPECT_USAGE_ERROR(rayPlaneIntersect(v3, v3, v3, v3, v2, point, uv), MODULE,
                       "plane_bottom_left expected to be 3D");
}
