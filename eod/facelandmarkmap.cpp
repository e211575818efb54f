#include "eod/detail/facelandmarkmap.h"

#include <cstdint>
#include <string>

#include <eod/serializableerror.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {
namespace detail {

namespace {

template <class Landmark, class V>
void visitLandmark(Landmark& landmark, V& v) {
    v(landmark.id);
    v(landmark.coordinate.x);
    v(landmark.coordinate.y);
    v(landmark.coordinate.z);
    v(landmark.texture_coordinate.u);
    v(landmark.texture_coordinate.v);
}

[[noreturn]] void throwReadError(const char* reader, const char* reason) {
    throw SerializableError(std::string(reader) + "::readEngineSpecificData() - " + reason);
}

const std::vector<std::string>& landmarkColumnLabels() {
    static const std::vector<std::string> labels = [] {
        std::vector<std::string> l;
        for (int id : FLM_IDS_ALL_FIXED()) {
            const std::string prefix = "FLM_" + std::to_string(id);
            l.push_back(prefix + "_X");
            l.push_back(prefix + "_Y");
            l.push_back(prefix + "_Z");
        }
        for (int id : FLM_IDS_ALL_FIXED()) {
            const std::string prefix = "FLM_" + std::to_string(id);
            l.push_back(prefix + "_U");
            l.push_back(prefix + "_V");
        }
        return l;
    }();
    return labels;
}

}  // namespace

void appendLandmarks(Bytes& out, const FaceLandmarkMap& landmarks) {
    // Most of a frame's numbers are landmarks: stored in room made once.
    appendFields(out, numLandmarkBytes(landmarks), [&landmarks](FieldStorer& s) {
        s(static_cast<int>(landmarks.size()));
        for (const auto& entry : landmarks) visitLandmark(entry.second, s);
    });
}

FaceLandmarkMap readLandmarks(const Bytes& in, int& read_pos, const char* reader) {
    const int count = readNumber<int>(in, read_pos);
    if (count < 0) throwReadError(reader, "num_coords >= 0 violated");
    if (std::uint64_t(count) * FACE_LANDMARK_BYTES > bytesRemaining(in, read_pos)) {
        throwReadError(reader, "number of landmarks exceeds amount of data in buffer");
    }
    FaceLandmarkMap landmarks;
    FieldReader r{in, read_pos};
    for (int i = 0; i < count; ++i) {
        FaceLandmark landmark;
        visitLandmark(landmark, r);
        // Written in ascending id order, so the end is the right place and the hint saves
        // the search; a repeated id still replaces the earlier landmark.
        landmarks.emplace_hint(landmarks.end(), landmark.id, landmark)->second = landmark;
    }
    return landmarks;
}

bool hasAllLandmarks(const FaceLandmarkMap& landmarks, const std::vector<int>& ids) {
    for (int id : ids) {
        if (landmarks.count(id) == 0) return false;
    }
    return true;
}

bool findCoordinate(const FaceLandmarkMap& landmarks, int id, FaceCoordinate& out) {
    const auto it = landmarks.find(id);
    if (it == landmarks.end()) return false;
    out = it->second.coordinate;
    return true;
}

bool findTextureCoordinate(const FaceLandmarkMap& landmarks, int id, FaceTextureCoordinate& out) {
    const auto it = landmarks.find(id);
    if (it == landmarks.end()) return false;
    out = it->second.texture_coordinate;
    return true;
}

void printLandmarkHeader(std::ostream& os) { Columns(os) << landmarkColumnLabels(); }

void printLandmarkData(std::ostream& os, const FaceLandmarkMap& landmarks) {
    Columns columns(os);
    for (int id : FLM_IDS_ALL_FIXED()) {
        FaceCoordinate c;
        findCoordinate(landmarks, id, c);
        columns << c.x << c.y << c.z;
    }
    for (int id : FLM_IDS_ALL_FIXED()) {
        FaceTextureCoordinate t;
        findTextureCoordinate(landmarks, id, t);
        columns << t.u << t.v;
    }
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
