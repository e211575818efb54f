#ifndef EOD_FACELANDMARK_H
#define EOD_FACELANDMARK_H

#include <eod/facecoordinate.h>
#include <eod/facetexturecoordinate.h>

namespace tq {
namespace eod {

// A numbered facial landmark. Ids are grouped by hundreds (see facelandmarkids.h); ids
// 800..899 belong to the face-texture mask and never to the face itself.
struct FaceLandmark {
    int id = 0;
    FaceCoordinate coordinate;
    FaceTextureCoordinate texture_coordinate;
};

inline bool operator==(const FaceLandmark& a, const FaceLandmark& b) {
    return a.id == b.id && a.coordinate == b.coordinate &&
           a.texture_coordinate == b.texture_coordinate;
}

inline bool operator!=(const FaceLandmark& a, const FaceLandmark& b) { return !(a == b); }

}  // namespace eod
}  // namespace tq

#endif
