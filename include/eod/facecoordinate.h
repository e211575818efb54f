#ifndef EOD_FACECOORDINATE_H
#define EOD_FACECOORDINATE_H

namespace tq {
namespace eod {

// Position of a face landmark.
struct FaceCoordinate {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

inline bool operator==(const FaceCoordinate& a, const FaceCoordinate& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

inline bool operator!=(const FaceCoordinate& a, const FaceCoordinate& b) { return !(a == b); }

}  // namespace eod
}  // namespace tq

#endif
