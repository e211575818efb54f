#include <eod/intersectionoutputbasev2.h>
#include <eod/serializableerror.h>

#include <set>
#include <utility>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

const unsigned int INDEX_BYTES = 4;
// The shortest label entry: an empty label (its terminator) and its index.
const unsigned int MIN_LABEL_ENTRY_BYTES = 1 + INDEX_BYTES;

[[noreturn]] void throwReadError(const std::string& reason) {
    throw SerializableError("IntersectionOutputBaseV2::readEngineSpecificData() - " + reason);
}

// A count read from bytes is trusted only as far as the remaining bytes can hold that many
// entries of at least min_entry_bytes each.
unsigned int readCount(const std::vector<unsigned char>& buffer, int& read_pos,
                       unsigned int min_entry_bytes, const char* what) {
    const unsigned int count = detail::readNumber<unsigned int>(buffer, read_pos);
    if (count > detail::bytesRemaining(buffer, read_pos) / min_entry_bytes) {
        throwReadError(std::string("number of ") + what + " exceeds amount of data in buffer");
    }
    return count;
}

template <class T>
void appendPoints(std::vector<unsigned char>& buffer, const std::map<int, std::vector<T>>& points) {
    detail::appendNumber(buffer, static_cast<unsigned int>(points.size()));
    detail::FieldWriter w{buffer};
    for (const auto& point : points) {
        w(point.first);
        w(point.second);
    }
}

template <class T>
std::map<int, std::vector<T>> readPoints(const std::vector<unsigned char>& buffer, int& read_pos,
                                         unsigned int dims, const std::set<int>& label_indices,
                                         const char* what) {
    const unsigned int count = readCount(buffer, read_pos, INDEX_BYTES + dims * sizeof(T), what);
    std::map<int, std::vector<T>> points;
    detail::FieldReader r{buffer, read_pos};
    for (unsigned int i = 0; i < count; ++i) {
        int index = 0;
        std::vector<T> point(dims);
        r(index);
        r(point);
        if (label_indices.count(index) == 0) {
            throwReadError("index " + std::to_string(index) + " of " + what + " names no label");
        }
        if (!points.emplace(index, std::move(point)).second) {
            throwReadError("index " + std::to_string(index) + " of " + what + " repeated");
        }
    }
    return points;
}

// Empty for the unknown label's -1: no stored index is negative.
template <class T>
std::vector<T> valueAt(const std::map<int, std::vector<T>>& points, int index) {
    const auto it = points.find(index);
    return it == points.end() ? std::vector<T>() : it->second;
}

template <class T>
std::vector<T> valueOrZeros(const std::map<int, std::vector<T>>& points, int index,
                            unsigned int dims) {
    const auto it = points.find(index);
    return it == points.end() ? std::vector<T>(dims, T()) : it->second;
}

}  // namespace

IntersectionOutputBaseV2::~IntersectionOutputBaseV2() = default;

void IntersectionOutputBaseV2::addIntersection(const std::string& label,
                                               const std::vector<float>& world) {
    storeIntersection(label, world, nullptr, nullptr);
}

void IntersectionOutputBaseV2::addIntersection(const std::string& label,
                                               const std::vector<float>& world,
                                               const std::vector<float>& plane) {
    storeIntersection(label, world, &plane, nullptr);
}

void IntersectionOutputBaseV2::addIntersection(const std::string& label,
                                               const std::vector<float>& world,
                                               const std::vector<float>& plane,
                                               const std::vector<int>& pixel) {
    storeIntersection(label, world, &plane, &pixel);
}

void IntersectionOutputBaseV2::storeIntersection(const std::string& label,
                                                 const std::vector<float>& world,
                                                 const std::vector<float>* plane,
                                                 const std::vector<int>* pixel) {
    EOD_REQUIRE(detail::hasNoNul(label), "label contains a NUL character");
    EOD_REQUIRE(world.size() == ARRAY_SIZE_3D_DATA, "world expected to be 3D point");
    EOD_REQUIRE(!plane || plane->size() == ARRAY_SIZE_2D_DATA, "plane expected to be 2D point");
    // Two elements are checked; the message has always said 3D.
    EOD_REQUIRE(!pixel || pixel->size() == ARRAY_SIZE_2D_DATA, "pixel expected to be 3D point");
    int index = -1;
    addLabelIndex(label, index);
    _world_points[index] = world;
    if (plane) _plane_points[index] = *plane;
    if (pixel) _pixels[index] = *pixel;
}

bool IntersectionOutputBaseV2::addLabelIndex(const std::string& label, int& index) {
    const auto known = _label_indices.find(label);
    if (known != _label_indices.end()) {
        index = known->second;
        return false;
    }
    int candidate = static_cast<int>(_label_indices.size());
    while (indexInUse(candidate)) ++candidate;
    _label_indices.emplace(label, candidate);
    index = candidate;
    return true;
}

bool IntersectionOutputBaseV2::indexInUse(int index) const {
    for (const auto& entry : _label_indices) {
        if (entry.second == index) return true;
    }
    return false;
}

int IntersectionOutputBaseV2::labelToIndex(const std::string& label) const {
    const auto it = _label_indices.find(label);
    return it == _label_indices.end() ? -1 : it->second;
}

bool IntersectionOutputBaseV2::hasWorld(const std::string& label) const {
    return !world(label).empty();
}

bool IntersectionOutputBaseV2::hasPlane(const std::string& label) const {
    return !plane(label).empty();
}

bool IntersectionOutputBaseV2::hasPixel(const std::string& label) const {
    return !pixel(label).empty();
}

std::vector<float> IntersectionOutputBaseV2::world(const std::string& label) const {
    return valueAt(_world_points, labelToIndex(label));
}

std::vector<float> IntersectionOutputBaseV2::plane(const std::string& label) const {
    return valueAt(_plane_points, labelToIndex(label));
}

std::vector<int> IntersectionOutputBaseV2::pixel(const std::string& label) const {
    return valueAt(_pixels, labelToIndex(label));
}

std::vector<std::string> IntersectionOutputBaseV2::intersectedItems() const {
    std::vector<std::string> labels;
    labels.reserve(_label_indices.size());
    for (const auto& entry : _label_indices) labels.push_back(entry.first);
    return labels;
}

void IntersectionOutputBaseV2::clearAllData() {
    _label_indices.clear();
    _world_points.clear();
    _plane_points.clear();
    _pixels.clear();
}

unsigned int IntersectionOutputBaseV2::combinedLabelSize() const {
    detail::FieldSizer s;
    for (const auto& entry : _label_indices) s(entry.first);
    return s.bytes;
}

unsigned int IntersectionOutputBaseV2::numEngineSpecificDataBytes() const {
    const unsigned int labels = static_cast<unsigned int>(_label_indices.size());
    const unsigned int world = static_cast<unsigned int>(_world_points.size());
    const unsigned int plane = static_cast<unsigned int>(_plane_points.size());
    const unsigned int pixels = static_cast<unsigned int>(_pixels.size());
    return combinedLabelSize() + 4 + 4 * labels + 4 + 16 * world + 4 + 12 * plane + 4 + 12 * pixels;
}

void IntersectionOutputBaseV2::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, static_cast<unsigned int>(_label_indices.size()));
    detail::FieldWriter w{buffer};
    for (const auto& entry : _label_indices) {
        w(entry.first);
        w(entry.second);
    }
    appendPoints(buffer, _world_points);
    appendPoints(buffer, _plane_points);
    appendPoints(buffer, _pixels);
}

// Decoded into locals and stored only when every table is valid, so that the record never
// holds points whose index names no label.
void IntersectionOutputBaseV2::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                      int& read_pos) {
    const unsigned int num_labels = readCount(buffer, read_pos, MIN_LABEL_ENTRY_BYTES, "labels");
    LabelIndices labels;
    std::set<int> indices;
    detail::FieldReader r{buffer, read_pos};
    for (unsigned int i = 0; i < num_labels; ++i) {
        std::string label;
        int index = 0;
        r(label);
        r(index);
        if (index < 0) throwReadError("label index negative");
        if (!labels.emplace(label, index).second) throwReadError("label repeated");
        if (!indices.insert(index).second) throwReadError("label index repeated");
    }
    FloatPoints world =
        readPoints<float>(buffer, read_pos, ARRAY_SIZE_3D_DATA, indices, "world points");
    FloatPoints plane =
        readPoints<float>(buffer, read_pos, ARRAY_SIZE_2D_DATA, indices, "plane points");
    IntPoints pixels = readPoints<int>(buffer, read_pos, ARRAY_SIZE_2D_DATA, indices, "pixels");

    _label_indices.swap(labels);
    _world_points.swap(world);
    _plane_points.swap(plane);
    _pixels.swap(pixels);
}

void IntersectionOutputBaseV2::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "ITEM_NAME"
                        << "WORLD_X"
                        << "WORLD_Y"
                        << "WORLD_Z"
                        << "PLANE_X"
                        << "PLANE_Y"
                        << "PIXEL_X"
                        << "PIXEL_Y";
}

void IntersectionOutputBaseV2::printOwnData(std::ostream& os) const {
    // Without labels the point tables are empty too, so every value prints as zeros.
    const bool nothing = _label_indices.empty();
    const int index = nothing ? 0 : _label_indices.begin()->second;
    detail::Columns(os) << (nothing ? std::string("Nothing") : _label_indices.begin()->first)
                        << valueOrZeros(_world_points, index, ARRAY_SIZE_3D_DATA)
                        << valueOrZeros(_plane_points, index, ARRAY_SIZE_2D_DATA)
                        << valueOrZeros(_pixels, index, ARRAY_SIZE_2D_DATA);
}

}  // namespace eod
}  // namespace tq
