#ifndef EOD_DETAIL_FACELANDMARKMAP_H
#define EOD_DETAIL_FACELANDMARKMAP_H

// What the face records share about their landmark maps: the wire form (a 4-byte count,
// then per landmark in ascending id order id, x, y, z, u, v: 24 bytes), the look-ups, and
// the fixed text columns.

#include <map>
#include <ostream>
#include <vector>

#include <eod/facelandmark.h>
#include <eod/facelandmarkids.h>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace detail {

using FaceLandmarkMap = std::map<int, FaceLandmark>;

const unsigned int FACE_LANDMARK_BYTES = 24;

inline bool isMaskLandmarkId(int id) {
    return id >= FLM_MASK_ID_FIRST && id <= FLM_MASK_ID_LAST;
}

inline unsigned int numLandmarkBytes(const FaceLandmarkMap& landmarks) {
    return 4 + FACE_LANDMARK_BYTES * static_cast<unsigned int>(landmarks.size());
}

void appendLandmarks(Bytes& out, const FaceLandmarkMap& landmarks);

// Reads a count and that many landmarks, each stored under its id; a later landmark of the
// same id replaces an earlier one. The id ranges of face and mask landmarks are the setters'
// rule for callers: a landmark of the other kind in the bytes is kept as it stands, so that
// one odd id never makes a whole frame unreadable. Throws SerializableError, with messages
// naming `reader`, for a negative count and a count that the remaining bytes cannot hold
// (checked before reading any).
FaceLandmarkMap readLandmarks(const Bytes& in, int& read_pos, const char* reader);

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
