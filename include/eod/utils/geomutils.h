#ifndef EOD_UTILS_GEOMUTILS_H
#define EOD_UTILS_GEOMUTILS_H

// Vector and ray geometry for the records' 2- and 3-element float vectors, and the rotation
// conversions of the head and gaze records in double precision.
//
// Wrong sizes are errors of the calling program (std::invalid_argument, "<module>:<line>:
// <reason>"); geometric impossibilities are GeomUtilsError.
//
// Rotation convention, shared by every function below:
// - Right-handed axes; all angles in radians.
// - Euler angles (x, y, z) are rotations about the fixed x, y and z axes, applied in that
//   order: R = Rz(z) * Ry(y) * Rx(x). The angles that come back lie in x, z in [-pi, pi]
//   and y in [-pi/2, pi/2].
// - A quaternion is (q0, q1, q2, q3) with q0 the scalar part. Conversions from a quaternion
//   use the rotation of q / |q|, so a quaternion need not be of unit length; the zero
//   quaternion is taken as no rotation.
// - A rotation matrix is 3 rows of 3 elements; it turns vectors of the rotated frame into
//   vectors of the fixed frame (v_fixed = R * v_rotated).
// - A gaze or head direction is the rotated z axis. Pitch is the rotation about x and yaw
//   the rotation about y, so the direction of (pitch, yaw) is the one the Euler angles
//   (pitch, yaw, 0) give: (cos(pitch) sin(yaw), -sin(pitch), cos(pitch) cos(yaw)).
//   Pitch = yaw = 0 looks along +z; a positive pitch turns it towards -y, a positive yaw
//   towards +x.

#include <vector>

#include <eod/utils/geomutilserror.h>

namespace tq {
namespace eod {
namespace utils {

// Element-wise arithmetic; the two operands of + and - must have the same size ("vectors of
// different dimensions").
std::vector<float> operator+(const std::vector<float>& a, const std::vector<float>& b);
std::vector<float> operator-(const std::vector<float>& a, const std::vector<float>& b);
std::vector<float> operator-(const std::vector<float>& a);
std::vector<float> operator*(float s, const std::vector<float>& a);

// Sum of the element products; sizes must be equal ("vectors of different lengths").
float innerProduct(const std::vector<float>& a, const std::vector<float>& b);
float length(const std::vector<float>& a);
// a / length(a); refused ("direction has zero length") when the length is below the float
// machine epsilon.
std::vector<float> unitVector(const std::vector<float>& a);
// a x b of two 3-vectors ("expect 3D direction vectors").
std::vector<float> crossProduct(const std::vector<float>& a, const std::vector<float>& b);

// Closest approach of the rays origin1 + s * direction1 and origin2 + t * direction2 (all
// 3-vectors; the directions need not be unit vectors). Both rays must come closest in front
// of their origins: GeomUtilsError "tq::eod::utils::rayIntersectionPoint : rays are
// parallel" when the directions are parallel, "... : rays are diverging" when s <= 0 or
// t <= 0. The outputs are written only on success.
void coefficientsOfRaysClosestApproach(const std::vector<float>& origin1,
                                       const std::vector<float>& direction1,
                                       const std::vector<float>& origin2,
                                       const std::vector<float>& direction2, float& s, float& t);
void pointsOfRaysClosestApproach(const std::vector<float>& origin1,
                                 const std::vector<float>& direction1,
                                 const std::vector<float>& origin2,
                                 const std::vector<float>& direction2, std::vector<float>& point1,
                                 std::vector<float>& point2);
// The midpoint of the two closest points: where two gaze rays meet (the vergence point).
std::vector<float> rayIntersectionPoint(const std::vector<float>& origin1,
                                        const std::vector<float>& direction1,
                                        const std::vector<float>& origin2,
                                        const std::vector<float>& direction2);

// Angle between two 3-vectors in radians, 0..pi. The cosine is clamped to -1..1 so that
// rounding cannot turn (anti)parallel vectors into NaN. The angle to a zero-length vector is
// undefined and returned as a quiet NaN.
float vectorIntersectionAngle(const std::vector<float>& direction1,
                              const std::vector<float>& direction2);

// Euler angles (x, y, z) to the unit quaternion of the same rotation ("expected 3D
// euler_angles").
std::vector<double> fromEulerAngles(const std::vector<double>& euler_angles);
// Quaternion to Euler angles ("expected q to be a 4 dimensions"). Away from gimbal lock
// (y = +-pi/2) fromEulerAngles and toEulerAngles invert each other; at gimbal lock the
// angles are chosen with z = 0 and still describe the same rotation.
std::vector<double> toEulerAngles(const std::vector<double>& q);
std::vector<std::vector<double>> eulerAnglesToRotationMatrix(
    const std::vector<double>& euler_angles);  // "3D euler angle expected"
std::vector<std::vector<double>> quaternionToRotationMatrix(
    const std::vector<double>& q);  // "expected q to be a 4 dimensions"
// Both expect 3 rows of 3 ("3x3 matrix expected"); the direction is the matrix's third
// column, the rotated z axis.
std::vector<double> rotMatrixToEulerAngles(const std::vector<std::vector<double>>& rot_matrix);
std::vector<double> rotMatrixToDirection(const std::vector<std::vector<double>>& rot_matrix);

// (pitch, yaw) to a unit direction ("expected vector of size 2").
std::vector<double> directionFromPitchYaw(const std::vector<double>& pitch_yaw);
// Direction of any length to (pitch, yaw), pitch in [-pi/2, pi/2], yaw in [-pi, pi]
// ("3D vector expected"); the zero vector gives (0, 0).
std::vector<double> pitchYawFromDirection(const std::vector<double>& direction);

// The ray ray_origin + t * direction against the plane through three corners of a
// rectangle such as a screen (each argument a 3-vector, checked in order: "ray_origin
// expected to be 3D", "direction expected to be 3D", "plane_top_left expected to be 3D",
// "plane_top_right expected to be 3D", "plane_bottom_left expected to be 3D").
// Returns true and sets `intersection` to the 3D point and `plane_coords` to (u, v) with
//   intersection = top_left + u * (top_right - top_left) + v * (bottom_left - top_left),
// so a point on the rectangle has 0 <= u, v <= 1. Returns false, leaving both outputs
// untouched, when there is no such point in front of the origin (t >= 0): the ray is
// parallel to the plane or lies in it, the direction is zero, the corners do not span a
// plane, or the plane lies behind the origin.
bool rayPlaneIntersect(const std::vector<double>& ray_origin, const std::vector<double>& direction,
                       const std::vector<double>& plane_top_left,
                       const std::vector<double>& plane_top_right,
                       const std::vector<double>& plane_bottom_left,
                       std::vector<double>& intersection, std::vector<double>& plane_coords);

}  // namespace utils
}  // namespace eod
}  // namespace tq

#endif
