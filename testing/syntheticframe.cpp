#include "testing/syntheticframe.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <eod/eod.h>

namespace eodtesting {

namespace {

using namespace tq::eod;

const double kRate = 60.0;
const double kPi = 3.14159265358979323846;
const double kBlinkPeriod = 4.0;     // seconds between blinks
const double kBlinkDuration = 0.15;  // seconds
const double kFixationDuration = 0.4;
const double kSaccadeDuration = 0.05;
const std::uint32_t kEpochSeconds = 1700000000;

// A fixed pseudo-random value in [0, 1) for an integer key (a 32-bit integer hash), so
// that every frame can be computed from its number alone.
double noise(std::uint32_t key) {
    key ^= key >> 16;
    key *= 0x7feb352dU;
    key ^= key >> 15;
    key *= 0x846ca68bU;
    key ^= key >> 16;
    return key / 4294967296.0;
}

template <class T>
boost::shared_ptr<T> make() {
    return boost::shared_ptr<T>(new T());
}

struct Head {
    std::vector<double> position;
    std::vector<double> euler;
    std::vector<std::vector<double>> eyeballs;
};

Head headAt(double t) {
    Head h;
    h.position = {0.02 * std::sin(0.3 * t), 0.01 * std::sin(0.5 * t + 1.0),
                  0.65 + 0.03 * std::sin(0.2 * t)};
    h.euler = {0.08 * std::sin(0.4 * t), 0.15 * std::sin(0.25 * t), 0.03 * std::sin(0.7 * t)};
    for (double side : {-1.0, 1.0}) {  // right eye first, at negative x
        h.eyeballs.push_back({h.position[0] + side * 0.032, h.position[1] + 0.03,
                              h.position[2] - 0.07});
    }
    return h;
}

// How far the eyes are closed: 0 open, 1 closed, a short ramp at every blink.
double closureAt(double t) {
    const double phase = std::fmod(t, kBlinkPeriod) - (kBlinkPeriod - kBlinkDuration);
    if (phase < 0) return 0.05;
    return 0.05 + 0.95 * std::sin(kPi * phase / kBlinkDuration);
}

bool blinkingAt(double t) { return closureAt(t) > 0.5; }

// Gaze fixates on a target for a while and then jumps to the next one.
struct Gaze {
    double pitch;
    double yaw;
    bool saccade;
};

Gaze gazeAt(double t) {
    const std::uint32_t fixation = static_cast<std::uint32_t>(t / kFixationDuration);
    const double into = t - fixation * kFixationDuration;
    const double pitch = 0.25 * (noise(2 * fixation) - 0.5);
    const double yaw = 0.5 * (noise(2 * fixation + 1) - 0.5);
    if (into >= kSaccadeDuration || fixation == 0) return {pitch, yaw, false};
    const double previous_pitch = 0.25 * (noise(2 * fixation - 2) - 0.5);
    const double previous_yaw = 0.5 * (noise(2 * fixation - 1) - 0.5);
    const double f = into / kSaccadeDuration;
    return {previous_pitch + f * (pitch - previous_pitch), previous_yaw + f * (yaw - previous_yaw),
            true};
}

GazeQualityLevel qualityAt(unsigned int frame_num, double t) {
    if (blinkingAt(t)) return NO_TRACKING;
    const double r = noise(frame_num * 7919U);
    return r < 0.85 ? GazeQualityLevel(3) : r < 0.95 ? GazeQualityLevel(2) : GazeQualityLevel(1);
}

// Share of the last minute's frames (at most) in which the eyes were mostly closed.
float perclosAt(unsigned int frame_num) {
    const unsigned int window = std::min<unsigned int>(frame_num + 1, static_cast<unsigned int>(kRate * 60));
    const double closed_per_period = kBlinkDuration / 3.0;  // time above 80 % of a blink
    const double seconds = window / kRate;
    return static_cast<float>(std::min(1.0, std::floor(seconds / kBlinkPeriod) * closed_per_period / seconds));
}

boost::shared_ptr<HeadOutputDataV2> headRecord(const Head& h) {
    auto head = make<HeadOutputDataV2>();
    head->setTrackingState(true);
    head->setHeadPosition(h.position);
    head->setHeadRotation(h.euler);
    head->setHeadPositionConfidence(0.92);
    head->setModelQualityLevel(3);
    head->setHeadEyeballPos(RIGHT_EYE, h.eyeballs[RIGHT_EYE]);
    head->setHeadEyeballPos(LEFT_EYE, h.eyeballs[LEFT_EYE]);
    return head;
}

std::vector<float> toFloat(const std::vector<double>& v) { return std::vector<float>(v.begin(), v.end()); }

boost::shared_ptr<EyeOutputData> eyeRecord(unsigned int frame_num, double t, const Head& h) {
    auto eyes = make<EyeOutputData>();
    const double closure = closureAt(t);
    const bool blinking = blinkingAt(t);

    auto closure_record = make<EyeClosureOutputData>();
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        closure_record->setEyeClosure(eye, static_cast<float>(closure));
        closure_record->setEyeClosureConfidence(eye, 0.9f);
    }
    closure_record->setEyeClosureCalibStatus(1.0f);
    closure_record->setBlinking(blinking);
    closure_record->setBlinkFrequency(static_cast<float>(60.0 / kBlinkPeriod));
    closure_record->setAverageBlinkDuration(static_cast<float>(kBlinkDuration));
    closure_record->setPerclos(perclosAt(frame_num));
    eyes->addSubObject(closure_record);

    const Gaze g = gazeAt(t);
    auto gaze = make<GazeOutputData>();
    const GazeQualityLevel quality = qualityAt(frame_num, t);
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        // The eyes converge on a point about 60 cm ahead.
        const double vergence = (eye == RIGHT_EYE ? 1.0 : -1.0) * 0.053;
        gaze->setGazeQualityLevel(eye, quality);
        gaze->setEyeballCentre(eye, toFloat(h.eyeballs[eye]));
        gaze->setGazeRotationPitchYaw(
            eye, {static_cast<float>(g.pitch), static_cast<float>(g.yaw + vergence)});
    }
    gaze->setGazeCalibrated(true);
    gaze->setSaccade(g.saccade);
    eyes->addSubObject(gaze);

    auto pupils = make<PupilOutputData>();
    for (int eye : {RIGHT_EYE, LEFT_EYE}) {
        std::vector<float> p = toFloat(h.eyeballs[eye]);
        p[2] -= 0.012f;
        pupils->setPupilPosition(eye, p);
        pupils->setPupilDiameter(eye, blinking ? 0.0f : static_cast<float>(0.0035 + 0.0005 * std::sin(0.1 * t)));
    }
    eyes->addSubObject(pupils);
    return eyes;
}

boost::shared_ptr<FaceOutputDataV2> faceRecord(const Head& h) {
    auto face = make<FaceOutputDataV2>();
    const std::vector<int>& ids = FLM_IDS_ALL_FIXED();
    for (std::size_t i = 0; i < ids.size(); ++i) {
        // Landmarks on an ellipse round the head centre, with a texture coordinate each.
        const double angle = 2 * kPi * i / ids.size();
        FaceLandmark landmark;
        landmark.id = ids[i];
        landmark.coordinate.x = static_cast<float>(h.position[0] + 0.06 * std::cos(angle));
        landmark.coordinate.y = static_cast<float>(h.position[1] + 0.08 * std::sin(angle));
        landmark.coordinate.z = static_cast<float>(h.position[2] - 0.09);
        landmark.texture_coordinate.u = static_cast<float>(0.5 + 0.4 * std::cos(angle));
        landmark.texture_coordinate.v = static_cast<float>(0.5 + 0.4 * std::sin(angle));
        face->addLandmark(landmark);
    }
    face->setFaceCount(1);
    return face;
}

boost::shared_ptr<WorldOutputDataV2> worldRecord(double t, const Head& h) {
    auto world = make<WorldOutputDataV2>();
    const Gaze g = gazeAt(t);
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        auto gaze = make<GazeIntersectionOutputDataV4>();
        gaze->setEyeId(eye);
        const float x = static_cast<float>(0.6 * std::tan(g.yaw));
        const float y = static_cast<float>(0.6 * std::tan(g.pitch));
        gaze->addIntersection("Screen(1)", {x, y, 0.0f}, {0.5f + x, 0.5f - y},
                              {static_cast<int>(960 + 1600 * x), static_cast<int>(540 - 1600 * y)});
        world->addSubObject(gaze);
    }
    auto head = make<HeadIntersectionOutputDataV2>();
    const float hx = static_cast<float>(h.position[0] + 0.6 * std::tan(h.euler[1]));
    head->addIntersection("Screen(1)", {hx, 0.0f, 0.0f}, {0.5f + hx, 0.5f},
                          {static_cast<int>(960 + 1600 * hx), 540});
    world->addSubObject(head);
    return world;
}

boost::shared_ptr<EngineStateOutputData> engineStateRecord(double t) {
    auto state = boost::shared_ptr<EngineStateOutputData>(new EngineStateOutputData(1));
    state->addSubObject(boost::shared_ptr<HeadTrackerStateOutputData>(
        new HeadTrackerStateOutputData(blinkingAt(t) ? 3 : 4)));
    auto pod = make<IRPodStateOutputData>();
    pod->setState(1);
    pod->setPosition({0.0f, -0.12f, 0.02f});
    state->addSubObject(pod);
    return state;
}

boost::shared_ptr<TimingOutputData> timingRecord(unsigned int frame_num, double t) {
    auto timing = make<TimingOutputData>();
    timing->setExperimentTime(t);
    const std::uint64_t ms = static_cast<std::uint64_t>(frame_num) * 1000 / 60;
    timing->setFrameTimeSeconds(static_cast<int>(kEpochSeconds + ms / 1000));
    timing->setFrameTimeMilliseconds(static_cast<unsigned short>(ms % 1000));
    timing->setApproxDelay(0.012f);
    return timing;
}

boost::shared_ptr<GPSOutputDataV2> gpsRecord(double t) {
    auto gps = make<GPSOutputDataV2>();
    gps->setDataValid(true);
    gps->setGMTTime(static_cast<unsigned int>(kEpochSeconds + t));
    GPSCoordinateV2 latitude;
    latitude.degrees = 48;
    latitude.minutes = 8;
    latitude.seconds = static_cast<float>(12.5 + 0.01 * t);
    latitude.hemisphere = 'N';
    GPSCoordinateV2 longitude;
    longitude.degrees = 11;
    longitude.minutes = 34;
    longitude.seconds = static_cast<float>(30.0 + 0.02 * t);
    longitude.hemisphere = 'E';
    gps->setLatitude(latitude);
    gps->setLongitude(longitude);
    gps->setSpeed(static_cast<float>(50.0 + 5.0 * std::sin(0.05 * t)));
    gps->setCourse(static_cast<float>(std::fmod(90.0 + t, 360.0)));
    return gps;
}

boost::shared_ptr<InertiaOutputData> inertiaRecord(double t) {
    auto inertia = make<InertiaOutputData>();
    inertia->setAngularRateX(static_cast<float>(0.01 * std::sin(t)));
    inertia->setAngularRateY(static_cast<float>(0.02 * std::sin(0.5 * t)));
    inertia->setAngularRateZ(static_cast<float>(0.05 * std::sin(0.05 * t)));
    inertia->setAccelX(static_cast<float>(0.3 * std::sin(0.2 * t)));
    inertia->setAccelY(0.0f);
    inertia->setAccelZ(9.81f);
    return inertia;
}

}  // namespace

boost::shared_ptr<EngineOutputData> syntheticFrame(unsigned int frame_num) {
    const double t = frame_num / kRate;
    const Head h = headAt(t);

    auto frame = make<EngineOutputData>();
    frame->setFrameNum(frame_num);
    frame->addSubObject(timingRecord(frame_num, t));
    frame->addSubObject(engineStateRecord(t));
    frame->addSubObject(worldRecord(t, h));
    frame->addSubObject(inertiaRecord(t));
    frame->addSubObject(gpsRecord(t));

    auto face_set = make<FaceSetOutputData>();
    face_set->addSubObject(headRecord(h));
    face_set->addSubObject(faceRecord(h));
    face_set->addSubObject(eyeRecord(frame_num, t, h));
    frame->addSubObject(face_set);
    return frame;
}

}  // namespace eodtesting
