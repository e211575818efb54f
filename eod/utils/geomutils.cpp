#include <eod/utils/geomutils.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace utils {

namespace {

// The 3-vectors of the double-precision rotation and plane code.
using Vec3 = std::array<double, 3>;
using Mat3 = std::array<Vec3, 3>;

Vec3 toVec3(const std::vector<double>& v) { return {v[0], v[1], v[2]}; }
std::vector<double> toVector(const Vec3& v) { return {v[0], v[1], v[2]}; }

std::vector<std::vector<double>> toVector(const Mat3& m) {
    return {toVector(m[0]), toVector(m[1]), toVector(m[2])};
}

Vec3 sub(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double norm(const Vec3& a) { return std::sqrt(dot(a, a)); }

void requireMatrix3x3(const std::vector<std::vector<double>>& m) {
    EOD_REQUIRE(m.size() == 3 && m[0].size() == 3 && m[1].size() == 3 && m[2].size() == 3,
                "3x3 matrix expected");
}

// |q|^2 times the rotation matrix of q / |q|: homogeneous in q, so it needs no
// normalisation, and the zero quaternion gives the zero matrix.
Mat3 scaledMatrixOfQuaternion(const std::vector<double>& q) {
    const double a = q[0], b = q[1], c = q[2], d = q[3];
    return {{{a * a + b * b - c * c - d * d, 2 * (b * c - a * d), 2 * (b * d + a * c)},
             {2 * (b * c + a * d), a * a - b * b + c * c - d * d, 2 * (c * d - a * b)},
             {2 * (b * d - a * c), 2 * (c * d + a * b), a * a - b * b - c * c + d * d}}};
}

// Euler angles of a positive multiple of R = Rz(z) Ry(y) Rx(x). Only ratios of elements are
// used, so the scale drops out; a zero matrix gives zero angles.
std::vector<double> eulerAnglesOfScaledMatrix(const Mat3& m) {
    // The third row is (-sin y, cos y sin x, cos y cos x), times the scale.
    const double cos_y = std::hypot(m[2][1], m[2][2]);
    const double scale = std::hypot(m[2][0], cos_y);
    const double y = std::atan2(-m[2][0], cos_y);
    // At gimbal lock only x - z (or x + z) is determined, and the elements that would give x
    // and z separately are rounding noise: put the whole turn into x. The threshold,
    // sqrt(epsilon), balances the rounding error just outside it against the error of
    // ignoring the tiny cos y just inside.
    if (cos_y <= std::sqrt(std::numeric_limits<double>::epsilon()) * scale) {
        return {std::atan2(-m[1][2], m[1][1]), y, 0.0};
    }
    return {std::atan2(m[2][1], m[2][2]), y, std::atan2(m[1][0], m[0][0])};
}

Mat3 matrixOfEulerAngles(const std::vector<double>& e) {
    const double cx = std::cos(e[0]), sx = std::sin(e[0]);
    const double cy = std::cos(e[1]), sy = std::sin(e[1]);
    const double cz = std::cos(e[2]), sz = std::sin(e[2]);
    return {{{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
             {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
             {-sy, cy * sx, cy * cx}}};
}

void requireRayVectors(const std::vector<float>& origin1, const std::vector<float>& direction1,
                       const std::vector<float>& origin2, const std::vector<float>& direction2) {
    EOD_REQUIRE(origin1.size() == 3, "origin1.size() == 3");
    EOD_REQUIRE(direction1.size() == 3, "direction1.size() == 3");
    EOD_REQUIRE(origin2.size() == 3, "origin2.size() == 3");
    EOD_REQUIRE(direction2.size() == 3, "direction2.size() == 3");
}

}  // namespace

std::vector<float> operator+(const std::vector<float>& a, const std::vector<float>& b) {
    EOD_REQUIRE(a.size() == b.size(), "vectors of different dimensions");
    std::vector<float> sum(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) sum[i] = a[i] + b[i];
    return sum;
}

std::vector<float> operator-(const std::vector<float>& a, const std::vector<float>& b) {
    EOD_REQUIRE(a.size() == b.size(), "vectors of different dimensions");
    std::vector<float> difference(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) difference[i] = a[i] - b[i];
    return difference;
}

std::vector<float> operator-(const std::vector<float>& a) { return -1.0f * a; }

std::vector<float> operator*(float s, const std::vector<float>& a) {
    std::vector<float> product(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) product[i] = s * a[i];
    return product;
}

float innerProduct(const std::vector<float>& a, const std::vector<float>& b) {
    EOD_REQUIRE(a.size() == b.size(), "vectors of different lengths");
    // Accumulated in double and rounded once, so the result does not depend on the order of
    // cancelling terms.
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += double(a[i]) * b[i];
    return static_cast<float>(sum);
}

float length(const std::vector<float>& a) { return std::sqrt(innerProduct(a, a)); }

std::vector<float> unitVector(const std::vector<float>& a) {
    const float norm = length(a);
    EOD_REQUIRE(!(norm < std::numeric_limits<float>::epsilon()), "direction has zero length");
    std::vector<float> unit(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) unit[i] = a[i] / norm;
    return unit;
}

std::vector<float> crossProduct(const std::vector<float>& a, const std::vector<float>& b) {
    EOD_REQUIRE(a.size() == 3 && b.size() == 3, "expect 3D direction vectors");
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

void coefficientsOfRaysClosestApproach(const std::vector<float>& origin1,
                                       const std::vector<float>& direction1,
                                       const std::vector<float>& origin2,
                                       const std::vector<float>& direction2, float& s, float& t) {
    requireRayVectors(origin1, direction1, origin2, direction2);
    const std::vector<float> w = origin1 - origin2;
    const double a = innerProduct(direction1, direction1);
    const double b = innerProduct(direction1, direction2);
    const double c = innerProduct(direction2, direction2);
    const double d = innerProduct(direction1, w);
    const double e = innerProduct(direction2, w);
    const double denom = a * c - b * b;
    if (denom <= 0) {
        throw GeomUtilsError("tq::eod::utils::rayIntersectionPoint : rays are parallel");
    }
    const float s_closest = static_cast<float>((b * e - c * d) / denom);
    const float t_closest = static_cast<float>((a * e - b * d) / denom);
    if (s_closest <= 0 || t_closest <= 0) {
        throw GeomUtilsError("tq::eod::utils::rayIntersectionPoint : rays are diverging");
    }
    s = s_closest;
    t = t_closest;
}

void pointsOfRaysClosestApproach(const std::vector<float>& origin1,
                                 const std::vector<float>& direction1,
                                 const std::vector<float>& origin2,
                                 const std::vector<float>& direction2, std::vector<float>& point1,
                                 std::vector<float>& point2) {
    float s = 0, t = 0;
    coefficientsOfRaysClosestApproach(origin1, direction1, origin2, direction2, s, t);
    point1 = origin1 + s * direction1;
    point2 = origin2 + t * direction2;
}

std::vector<float> rayIntersectionPoint(const std::vector<float>& origin1,
                                        const std::vector<float>& direction1,
                                        const std::vector<float>& origin2,
                                        const std::vector<float>& direction2) {
    std::vector<float> point1, point2;
    pointsOfRaysClosestApproach(origin1, direction1, origin2, direction2, point1, point2);
    return 0.5f * (point1 + point2);
}

float vectorIntersectionAngle(const std::vector<float>& direction1,
                              const std::vector<float>& direction2) {
    EOD_REQUIRE(direction1.size() == 3, "direction1.size() == 3");
    EOD_REQUIRE(direction2.size() == 3, "direction2.size() == 3");
    // In double throughout: with float lengths, parallel directions would come out a few
    // 1e-4 radians apart, since acos magnifies the rounding of a cosine near 1.
    double dot12 = 0, dot11 = 0, dot22 = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        dot12 += double(direction1[i]) * direction2[i];
        dot11 += double(direction1[i]) * direction1[i];
        dot22 += double(direction2[i]) * direction2[i];
    }
    const double lengths = std::sqrt(dot11 * dot22);
    if (lengths == 0) return std::numeric_limits<float>::quiet_NaN();
    return static_cast<float>(std::acos(std::clamp(dot12 / lengths, -1.0, 1.0)));
}

std::vector<double> fromEulerAngles(const std::vector<double>& euler_angles) {
    EOD_REQUIRE(euler_angles.size() == 3, "expected 3D euler_angles");
    // q = qz * qy * qx, the product of the three half-angle rotations.
    const double cx = std::cos(euler_angles[0] / 2), sx = std::sin(euler_angles[0] / 2);
    const double cy = std::cos(euler_angles[1] / 2), sy = std::sin(euler_angles[1] / 2);
    const double cz = std::cos(euler_angles[2] / 2), sz = std::sin(euler_angles[2] / 2);
    return {cx * cy * cz + sx * sy * sz, sx * cy * cz - cx * sy * sz,
            cx * sy * cz + sx * cy * sz, cx * cy * sz - sx * sy * cz};
}

std::vector<double> toEulerAngles(const std::vector<double>& q) {
    EOD_REQUIRE(q.size() == 4, "expected q to be a 4 dimensions");
    return eulerAnglesOfScaledMatrix(scaledMatrixOfQuaternion(q));
}

std::vector<std::vector<double>> eulerAnglesToRotationMatrix(
    const std::vector<double>& euler_angles) {
    EOD_REQUIRE(euler_angles.size() == 3, "3D euler angle expected");
    return toVector(matrixOfEulerAngles(euler_angles));
}

std::vector<std::vector<double>> quaternionToRotationMatrix(const std::vector<double>& q) {
    EOD_REQUIRE(q.size() == 4, "expected q to be a 4 dimensions");
    const double squared_norm = q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3];
    if (squared_norm == 0) return toVector(Mat3{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    Mat3 m = scaledMatrixOfQuaternion(q);
    for (Vec3& row : m) {
        for (double& element : row) element /= squared_norm;
    }
    return toVector(m);
}

std::vector<double> rotMatrixToEulerAngles(const std::vector<std::vector<double>>& rot_matrix) {
    requireMatrix3x3(rot_matrix);
    return eulerAnglesOfScaledMatrix(
        {toVec3(rot_matrix[0]), toVec3(rot_matrix[1]), toVec3(rot_matrix[2])});
}

std::vector<double> rotMatrixToDirection(const std::vector<std::vector<double>>& rot_matrix) {
    requireMatrix3x3(rot_matrix);
    return {rot_matrix[0][2], rot_matrix[1][2], rot_matrix[2][2]};
}

std::vector<double> directionFromPitchYaw(const std::vector<double>& pitch_yaw) {
    EOD_REQUIRE(pitch_yaw.size() == 2, "expected vector of size 2");
    const double cos_pitch = std::cos(pitch_yaw[0]);
    return {cos_pitch * std::sin(pitch_yaw[1]), -std::sin(pitch_yaw[0]),
            cos_pitch * std::cos(pitch_yaw[1])};
}

std::vector<double> pitchYawFromDirection(const std::vector<double>& direction) {
    EOD_REQUIRE(direction.size() == 3, "3D vector expected");
    return {std::atan2(-direction[1], std::hypot(direction[0], direction[2])),
            std::atan2(direction[0], direction[2])};
}

bool rayPlaneIntersect(const std::vector<double>& ray_origin, const std::vector<double>& direction,
                       const std::vector<double>& plane_top_left,
                       const std::vector<double>& plane_top_right,
                       const std::vector<double>& plane_bottom_left,
                       std::vector<double>& intersection, std::vector<double>& plane_coords) {
    EOD_REQUIRE(ray_origin.size() == 3, "ray_origin expected to be 3D");
    EOD_REQUIRE(direction.size() == 3, "direction expected to be 3D");
    EOD_REQUIRE(plane_top_left.size() == 3, "plane_top_left expected to be 3D");
    EOD_REQUIRE(plane_top_right.size() == 3, "plane_top_right expected to be 3D");
    EOD_REQUIRE(plane_bottom_left.size() == 3, "plane_bottom_left expected to be 3D");
    const Vec3 origin = toVec3(ray_origin);
    const Vec3 d = toVec3(direction);
    const Vec3 top_left = toVec3(plane_top_left);
    const Vec3 across = sub(toVec3(plane_top_right), top_left);
    const Vec3 down = sub(toVec3(plane_bottom_left), top_left);
    const Vec3 normal = cross(across, down);

    // Relative test, so that the answer does not depend on the units of the vectors; it also
    // catches a zero direction and corners on one line (zero normal).
    const double d_dot_n = dot(d, normal);
    if (std::abs(d_dot_n) <= std::numeric_limits<double>::epsilon() * norm(d) * norm(normal)) {
        return false;
    }
    const double t = dot(sub(top_left, origin), normal) / d_dot_n;
    if (!(t >= 0)) return false;  // behind the origin, or NaN input

    const Vec3 point = {origin[0] + t * d[0], origin[1] + t * d[1], origin[2] + t * d[2]};
    const Vec3 offset = sub(point, top_left);
    const double n2 = dot(normal, normal);
    // offset = u * across + v * down; crossing with down or across isolates u or v.
    plane_coords = {dot(cross(offset, down), normal) / n2, dot(cross(across, offset), normal) / n2};
    intersection = toVector(point);
    return true;
}

}  // namespace utils
}  // namespace eod
}  // namespace tq
