#include <eod/versioning.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>

#include <eod/faceoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/gazeintersectionoutputdatav1.h>
#include <eod/gazeintersectionoutputdatav2.h>
#include <eod/gazeintersectionoutputdatav3.h>
#include <eod/gazeintersectionoutputdatav4.h>
#include <eod/gpscoordinatev1.h>
#include <eod/gpscoordinatev2.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headintersectionoutputdatav1.h>
#include <eod/headintersectionoutputdatav2.h>
#include <eod/headoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/utils/geomutils.h>
#include <eod/worldoutputdata.h>
#include <eod/worldoutputdatav2.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

std::vector<double> widened(const std::vector<float>& v) {
    return std::vector<double>(v.begin(), v.end());
}

std::vector<float> narrowed(const std::vector<double>& v) {
    std::vector<float> out;
    out.reserve(v.size());
    for (double x : v) out.push_back(static_cast<float>(x));
    return out;
}

// The flag and deep copies of the sub-records: what every pair of generations shares.
void copyEnvelope(const EngineOutputBase& from, EngineOutputBase& to) { to = from; }

// Whole units towards zero when T can hold them; the old generations' integer fields.
template <class T>
bool truncatedFits(double value, T& out) {
    const double whole = std::trunc(value);
    if (!(whole >= std::numeric_limits<T>::min() && whole <= std::numeric_limits<T>::max())) {
        return false;  // NaN fails both comparisons
    }
    out = static_cast<T>(whole);
    return true;
}

// The items of a first-generation intersection: the default screen when the ray meets it,
// and the named object when its point is known.
void addFirstGenerationItems(const IntersectionOutputBase& from,
                             const std::vector<float>* object_point, IntersectionOutputBaseV2& to) {
    const std::string& screen = IntersectionOutputBase::defaultScreenName();
    if (from.intersectsScreen()) {
        to.addIntersection(screen, from.screenIntersectionWorldCoordinates(),
                           from.screenIntersectionScreenCoordinates(),
                           from.screenIntersectionPixelCoordinates());
    }
    const std::string name = from.intersectionObjectName();
    if (object_point && name != IntersectionOutputBase::defaultObjectName() && name != screen) {
        to.addIntersection(name, *object_point);
    }
}

// The screen item back to the screen intersection; returns the first other item with a world
// point (the object), or an empty label when there is none.
std::string setFirstGenerationFields(const IntersectionOutputBaseV2& from,
                                     IntersectionOutputBase& to) {
    const std::string& screen = IntersectionOutputBase::defaultScreenName();
    std::string object;
    for (const std::string& label : from.intersectedItems()) {
        if (label == screen) {
            to.setIntersectsScreen(true);
            if (from.hasWorld(label)) to.setScreenIntersectionWorldCoordinates(from.world(label));
            if (from.hasPlane(label)) to.setScreenIntersectionScreenCoordinates(from.plane(label));
            if (from.hasPixel(label)) to.setScreenIntersectionPixelCoordinates(from.pixel(label));
        } else if (object.empty() && from.hasWorld(label)) {
            object = label;
        }
    }
    if (!object.empty()) to.setIntersectionObjectName(object);
    return object;
}

}  // namespace

// ---- Head: the cross-version constructors and assignments do the work, since a record read
// from bytes may hold values (a confidence outside 0..1) that the checked setters refuse.

HeadOutputDataV2::HeadOutputDataV2(const HeadOutputData& other) : HeadOutputDataV2() {
    *this = other;
}

HeadOutputDataV2& HeadOutputDataV2::operator=(const HeadOutputData& other) {
    copyEnvelope(other, *this);
    _tracking_state = other.trackingState() != 0;
    _head_position = widened(other.headPosition());
    _head_rotation = widened(other.headRotation());
    _head_rotation_quaternion = utils::fromEulerAngles(_head_rotation);
    _head_position_confidence = other.headPositionConfidence();
    _model_quality_level = other.modelQualityLevel();
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        _head_eyeball_pos[eye] = widened(other.headEyeBallPos(eye));
    }
    return *this;
}

HeadOutputData::HeadOutputData(const HeadOutputDataV2& other) : HeadOutputData() {
    *this = other;
}

HeadOutputData& HeadOutputData::operator=(const HeadOutputDataV2& other) {
    copyEnvelope(other, *this);
    _tracking_state = other.isTracking() ? 1 : 0;
    _head_position = narrowed(other.headPosition());
    _head_rotation = narrowed(other.headRotation());
    _head_position_confidence = static_cast<float>(other.headPositionConfidence());
    _model_quality_level = other.modelQualityLevel();
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        _head_eyeball_pos[eye] = narrowed(other.headEyeBallPos(eye));
    }
    return *this;
}

void convert(const HeadOutputData& from, HeadOutputDataV2& to) { to = from; }
void convert(const HeadOutputDataV2& from, HeadOutputData& to) { to = from; }

// ---- Face

void convert(const FaceOutputData& from, FaceOutputDataV2& to) {
    FaceOutputDataV2 result;
    copyEnvelope(from, result);
    for (const auto& entry : from.faceLandmarks()) result.addLandmark(entry.second);
    to = result;
}

void convert(const FaceOutputDataV2& from, FaceOutputData& to) {
    FaceOutputData result;
    copyEnvelope(from, result);
    for (const auto& entry : from.faceLandmarks()) result.addLandmark(entry.second);
    to = result;
}

// ---- GPS

void convert(const GPSCoordinateV1& from, GPSCoordinateV2& to) {
    to.degrees = from.degrees;
    to.minutes = from.minutes;
    to.seconds = from.seconds;
    to.hemisphere = from.hemisphere;
}

void convert(const GPSCoordinateV2& from, GPSCoordinateV1& to) {
    char seconds = 0;
    EOD_REQUIRE(truncatedFits(from.seconds, seconds), "seconds cannot be held by GPSCoordinateV1");
    to.degrees = from.degrees;
    to.minutes = from.minutes;
    to.seconds = seconds;
    to.hemisphere = from.hemisphere;
}

namespace {

// What the two GPS generations share, the coordinates converted, into a new record To.
template <class To, class From>
To sharedGPSFields(const From& from) {
    To to;
    copyEnvelope(from, to);
    to.setDataValid(from.isDataValid());
    to.setGMTTime(from.gmtTime());
    decltype(to.latitude()) coordinate;
    convert(from.latitude(), coordinate);
    to.setLatitude(coordinate);
    convert(from.longitude(), coordinate);
    to.setLongitude(coordinate);
    return to;
}

}  // namespace

void convert(const GPSOutputData& from, GPSOutputDataV2& to) {
    GPSOutputDataV2 result = sharedGPSFields<GPSOutputDataV2>(from);
    result.setSpeed(from.speed());
    to = result;
}

void convert(const GPSOutputDataV2& from, GPSOutputData& to) {
    short speed = 0;
    EOD_REQUIRE(truncatedFits(std::round(from.speed()), speed),
                "speed cannot be held by GPSOutputData");
    GPSOutputData result = sharedGPSFields<GPSOutputData>(from);
    result.setSpeed(speed);
    to = result;
}

// ---- Intersections

GazeIntersectionOutputDataV1::GazeIntersectionOutputDataV1(
    const GazeIntersectionOutputDataV2& other) {
    *this = other;
}

GazeIntersectionOutputDataV1& GazeIntersectionOutputDataV1::operator=(
    const GazeIntersectionOutputDataV2& other) {
    copyEnvelope(other, *this);
    assignData(other);
    return *this;
}

GazeIntersectionOutputDataV2::GazeIntersectionOutputDataV2(
    const GazeIntersectionOutputDataV1& other)
    : GazeIntersectionOutputDataV2() {
    *this = other;
}

GazeIntersectionOutputDataV2& GazeIntersectionOutputDataV2::operator=(
    const GazeIntersectionOutputDataV1& other) {
    copyEnvelope(other, *this);
    assignData(other);
    return *this;
}

void convert(const GazeIntersectionOutputDataBase& from, GazeIntersectionOutputDataV3& to) {
    GazeIntersectionOutputDataV3 result;
    copyEnvelope(from, result);
    const auto* v2 = dynamic_cast<const GazeIntersectionOutputDataV2*>(&from);
    const std::vector<float> object_point = from.gazeObjectIntersection();
    addFirstGenerationItems(from, v2 ? &object_point : nullptr, result);
    to = result;
}

void convert(const GazeIntersectionOutputDataV3& from, GazeIntersectionOutputDataV2& to) {
    GazeIntersectionOutputDataV2 result;
    copyEnvelope(from, result);
    const std::string object = setFirstGenerationFields(from, result);
    if (!object.empty()) result.setGazeObjectIntersection(from.world(object));
    to = result;
}

void convert(const HeadIntersectionOutputDataV1& from, HeadIntersectionOutputDataV2& to) {
    HeadIntersectionOutputDataV2 result;
    copyEnvelope(from, result);
    addFirstGenerationItems(from, nullptr, result);
    to = result;
}

void convert(const HeadIntersectionOutputDataV2& from, HeadIntersectionOutputDataV1& to) {
    HeadIntersectionOutputDataV1 result;
    copyEnvelope(from, result);
    setFirstGenerationFields(from, result);
    to = result;
}

GazeIntersectionOutputDataV3::GazeIntersectionOutputDataV3(
    const GazeIntersectionOutputDataV4& other)
    : IntersectionOutputBaseV2(other) {}

GazeIntersectionOutputDataV3& GazeIntersectionOutputDataV3::operator=(
    const GazeIntersectionOutputDataV4& other) {
    IntersectionOutputBaseV2::operator=(other);
    return *this;
}

GazeIntersectionOutputDataV4::GazeIntersectionOutputDataV4(
    const GazeIntersectionOutputDataV3& other)
    : IntersectionOutputBaseV2(other), _eye_id(BOTH_EYES) {}

GazeIntersectionOutputDataV4& GazeIntersectionOutputDataV4::operator=(
    const GazeIntersectionOutputDataV3& other) {
    IntersectionOutputBaseV2::operator=(other);
    _eye_id = BOTH_EYES;
    return *this;
}

void convert(const GazeIntersectionOutputDataV3& from, GazeIntersectionOutputDataV4& to) {
    to = from;
}

void convert(const GazeIntersectionOutputDataV4& from, GazeIntersectionOutputDataV3& to) {
    to = from;
}

// ---- World

namespace {

// In `world`, a deep copy of the source world, replaces the copy of the source's child
// `original` by its conversion to To. A world that already holds a To keeps both as they are.
template <class To, class From>
void convertChild(const boost::shared_ptr<From const>& original, EngineOutputBase& world) {
    if (!original || world.hasSubObjectID(To::THIS_OBJECT_ID)) return;
    const boost::shared_ptr<To> converted(new To);
    convert(*original, *converted);
    world.removeSubObjectAtIndex(original->objectID(), 0);
    world.addSubObject(converted);
}

}  // namespace

void convert(const WorldOutputData& from, WorldOutputDataV2& to) {
    WorldOutputDataV2 result;
    copyEnvelope(from, result);
    convertChild<GazeIntersectionOutputDataV3>(from.gazeIntersectionOutputData(), result);
    convertChild<HeadIntersectionOutputDataV2>(from.headIntersectionOutputData(), result);
    to = result;
}

void convert(const WorldOutputDataV2& from, WorldOutputData& to) {
    WorldOutputData result;
    copyEnvelope(from, result);
    while (result.removeSubObject(GazeIntersectionOutputDataV4::THIS_OBJECT_ID)) {
    }
    convertChild<GazeIntersectionOutputDataV2>(from.gazeIntersectionOutputData(), result);
    convertChild<HeadIntersectionOutputDataV1>(from.headIntersectionOutputData(), result);
    to = result;
}

}  // namespace eod
}  // namespace tq
