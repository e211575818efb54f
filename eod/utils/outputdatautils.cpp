#include <eod/utils/outputdatautils.h>

#include <cmath>
#include <limits>
#include <string>

#include <eod/engineoutputdata.h>
#include <eod/eoderror.h>
#include <eod/eyeoutputdata.h>
#include <eod/gazeoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/io/recordingreader.h>
#include <eod/io/outputdataprinter.h>
#include <eod/utils/geomutils.h>
#include <eod/utils/geomutilserror.h>

namespace tq {
namespace eod {
namespace utils {

namespace {

const int BEST_GAZE_QUALITY_LEVEL = NUM_GAZE_QUALITY_LEVELS - 1;

bool allFinite(const std::vector<float>& v) {
    for (float x : v) {
        if (!std::isfinite(x)) return false;
    }
    return true;
}

// The tracked eyes' level as a weight, 0 for an untracked eye.
int weight(const GazeOutputData& gaze, EyeId eye) {
    return isEyeTracked(gaze, eye) ? static_cast<int>(gaze.gazeQualityLevel(eye)) : 0;
}

// (w_r d_r + w_l d_l) / |...| and the matching weighted origin; both weights > 0.
GazeRay combined(const GazeOutputData& gaze, float w_right, float w_left, const char* function) {
    const GazeRay right = gazeRay(gaze, RIGHT_EYE);
    const GazeRay left = gazeRay(gaze, LEFT_EYE);
    const std::vector<float> sum = w_right * right.direction + w_left * left.direction;
    const float norm = length(sum);
    // Relative to the longest the sum can be, so that the weights do not move the threshold.
    if (norm < std::numeric_limits<float>::epsilon() * (w_right + w_left)) {
        throw GeomUtilsError(std::string("tq::eod::utils::") + function +
                             " : gaze directions cancel out");
    }
    GazeRay ray;
    ray.eye = BOTH_EYES;
    ray.origin = (1.0f / (w_right + w_left)) * (w_right * right.origin + w_left * left.origin);
    ray.direction = (1.0f / norm) * sum;
    return ray;
}

}  // namespace

bool isEyeTracked(const GazeOutputData& gaze, EyeId eye) {
    const int level = gaze.gazeQualityLevel(eye);
    return level > NO_TRACKING && level <= BEST_GAZE_QUALITY_LEVEL &&
           allFinite(gaze.eyeballCentre(eye)) && allFinite(gaze.gazeRotation(eye));
}

GazeRay gazeRay(const GazeOutputData& gaze, EyeId eye) {
    GazeRay ray;
    ray.eye = eye;
    ray.origin = gaze.eyeballCentre(eye);
    const std::vector<float>& pitch_yaw = gaze.gazeRotation(eye);
    const std::vector<double> direction =
        directionFromPitchYaw(std::vector<double>(pitch_yaw.begin(), pitch_yaw.end()));
    ray.direction.assign(direction.begin(), direction.end());
    return ray;
}

Vergence gazeVergence(const GazeOutputData& gaze) {
    Vergence vergence;
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        if (!isEyeTracked(gaze, eye) || gaze.gazeQualityLevel(eye) != BEST_GAZE_QUALITY_LEVEL) {
            return vergence;
        }
    }
    const GazeRay right = gazeRay(gaze, RIGHT_EYE);
    const GazeRay left = gazeRay(gaze, LEFT_EYE);
    vergence.angle = vectorIntersectionAngle(right.direction, left.direction);
    try {
        vergence.point = rayIntersectionPoint(right.origin, right.direction, left.origin,
                                              left.direction);
    } catch (const GeomUtilsError&) {
        vergence.status = VERGENCE_NO_POINT;
        return vergence;
    }
    vergence.distance = length(0.5f * (right.origin + left.origin) - vergence.point);
    vergence.status = VERGENCE_OK;
    return vergence;
}

bool cyclopsGazeRay(const GazeOutputData& gaze, GazeRay& ray) {
    const bool right = isEyeTracked(gaze, RIGHT_EYE);
    const bool left = isEyeTracked(gaze, LEFT_EYE);
    if (right && left) {
        ray = combined(gaze, 1.0f, 1.0f, "cyclopsGazeRay");
    } else if (right || left) {
        ray = gazeRay(gaze, right ? RIGHT_EYE : LEFT_EYE);
    } else {
        return false;
    }
    return true;
}

bool bestGazeRay(const GazeOutputData& gaze, GazeRay& ray) {
    const int right = weight(gaze, RIGHT_EYE);
    const int left = weight(gaze, LEFT_EYE);
    if (right == 0 && left == 0) return false;
    ray = gazeRay(gaze, right >= left ? RIGHT_EYE : LEFT_EYE);
    return true;
}

bool mergedGazeRay(const GazeOutputData& gaze, GazeRay& ray) {
    const int right = weight(gaze, RIGHT_EYE);
    const int left = weight(gaze, LEFT_EYE);
    if (right == 0 && left == 0) return false;
    if (right == 0 || left == 0) {
        ray = gazeRay(gaze, right != 0 ? RIGHT_EYE : LEFT_EYE);
    } else {
        ray = combined(gaze, static_cast<float>(right), static_cast<float>(left),
                       "mergedGazeRay");
    }
    return true;
}

bool isTracking(const EngineOutputData& frame) {
    const boost::shared_ptr<HeadOutputDataV2 const> head = frame.headOutputData();
    const boost::shared_ptr<EyeOutputData const> eyes = frame.eyeOutputData();
    if (!head || !head->isTracking() || !eyes) return false;
    const boost::shared_ptr<GazeOutputData const> gaze = eyes->gazeOutputData();
    return gaze && (isEyeTracked(*gaze, RIGHT_EYE) || isEyeTracked(*gaze, LEFT_EYE));
}

namespace {

// Calls `each` with every frame of the recording that `select` keeps.
template <class Each>
void forEachSelectedFrame(const std::string& path, unsigned int first_frame,
                          unsigned int last_frame,
                          const std::function<bool(EngineOutputData&)>& select, Each each) {
    io::RecordingReader reader;
    reader.setRange(first_frame, last_frame);
    reader.open(path);
    while (const boost::shared_ptr<EngineOutputData> frame = reader.readData()) {
        if (!select || select(*frame)) each(*frame);
    }
}

}  // namespace

std::size_t logToText(const std::string& path, std::ostream& os,
                      const std::function<bool(EngineOutputData&)>& select,
                      unsigned int first_frame, unsigned int last_frame) {
    io::OutputDataPrinter printer;
    try {
        forEachSelectedFrame(path, first_frame, last_frame, select,
                             [&](const EngineOutputData& f) { printer.addColumnsOf(f); });
    } catch (const EODError&) {
        // The second pass meets the same error, after printing every frame before it.
    }
    printer.printHeader(os);
    std::size_t printed = 0;
    forEachSelectedFrame(path, first_frame, last_frame, select, [&](const EngineOutputData& f) {
        printer.printData(os, f);
        ++printed;
    });
    return printed;
}

}  // namespace utils
}  // namespace eod
}  // namespace tq
