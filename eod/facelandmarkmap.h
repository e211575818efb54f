#ifndef EOD_FACELANDMARKMAP_H
#define EOD_FACELANDMARKMAP_H

// What the face records share about their landmark maps: the wire form (a 4-byte count,
// then per landmark in ascending id order id, x, y, z, u, v: 24 bytes), the look-ups, and
// the fixed text columns.

#include <map>
#include <ostream>
#include <vector>

#include <eod/facelandmark.h>
#include <eod/facelandmarkids.h>

#include "eod/bytecodec.h"

namespace tq {
namespace eod {
namespace detail {

using FaceLandmarkMap = std::map<int, FaceLandmark>;

const unsigned int FACE_LANDMARK_BYTES = 24;

inline bool isMaskLandmarkId(int id) {
    return id >= FLM_MASK_ID_FIRST && id <= FLM_MASK_ID_LAST;
}

// Which ids a map may hold: face landmarks lie outside 800..899, mask landmarks inside.
enum class LandmarkKind { FACE, MASK };

inline unsigned int numLandmarkBytes(const FaceLandmarkMap& landmarks) {
    return 4 + FACE_LANDMARK_BYTES * static_cast<unsigned int>(landmarks.size());
}

void appendLandmarks(Bytes& out, const FaceLandmarkMap& landmarks);

// Reads a count and that many landmarks; a later landmark of the same id replaces an
// earlier one. Throws SerializableError, with messages naming `reader`, for a negative
// count, a count that the remaining bytes cannot hold (checked before reading any), and an
// id of the wrong kind.
FaceLandmarkMap readLandmarks(const Bytes& in, int& read_pos, LandmarkKind kind,
                              const char* reader);

bool hasAllLandmarks(const FaceLandmarkMap& landmarks, const std::vector<int>& ids);
// Copy the value and return true when the landmark exists; otherwise false.
bool findCoordinate(const FaceLandmarkMap& landmarks, int id, FaceCoordinate& out);
bool findTextureCoordinate(const FaceLandmarkMap& landmarks, int id, FaceTextureCoordinate& out);

// For each id of FLM_IDS_ALL_FIXED "FLM_<id>_X", "_Y", "_Z", then for each again "_U", "_V":
// 190 columns whatever the map holds; an absent landmark prints zeros.
void printLandmarkHeader(std::ostream& os);
void printLandmarkData(std::ostream& os, const FaceLandmarkMap& landmarks);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
