#ifndef EOD_FACETEXTURECOORDINATE_H
#define EOD_FACETEXTURECOORDINATE_H

namespace tq {
namespace eod {

// Position of a face landmark in the face texture image.
struct FaceTextureCoordinate {
    float u = 0.0f;
    float v = 0.0f;
};

inline bool operator==(const FaceTextureCoordinate& a, const FaceTextureCoordinate& b) {
    return a.u == b.u && a.v == b.v;
}

inline bool operator!=(const FaceTextureCoordinate& a, const FaceTextureCoordinate& b) {
    return !(a == b);
}

}  // namespace eod
}  // namespace tq

#endif
