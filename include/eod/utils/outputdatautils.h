#ifndef EOD_UTILS_OUTPUTDATAUTILS_H
#define EOD_UTILS_OUTPUTDATAUTILS_H

// Questions analysis code asks of a frame's gaze: where the two gazes meet (vergence), the
// gaze of a virtual eye between the two (cyclops), the better of the two gaze rays, both
// combined, and whether the frame tracks a face and its eyes; and a recording as text.
//
// Notation. For eye e (RIGHT_EYE, LEFT_EYE) of a GazeOutputData: c_e its eyeball centre, d_e
// the unit direction directionFromPitchYaw(gazeRotation(e)) (geomutils.h), q_e its gaze
// quality level. An eye is tracked when 1 <= q_e <= 3: NO_TRACKING and levels read from bytes
// outside 0..3 count as untracked. A stored value that is not finite (read from bytes)
// makes its eye untracked too, so that no result is ever NaN.

#include <cstddef>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class EngineOutputData;
class GazeOutputData;

namespace utils {

// True when 1 <= q_eye <= 3 and the eye's centre and rotation are finite.
bool isEyeTracked(const GazeOutputData& gaze, EyeId eye);

// The gaze of one eye: c_e and d_e.
struct GazeRay {
    EyeId eye = BOTH_EYES;  // the eye it belongs to; BOTH_EYES for a combination
    std::vector<float> origin = std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
    std::vector<float> direction = std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
};

// d_e for either eye, tracked or not (eye RIGHT_EYE or LEFT_EYE, else the record's usage
// error). Non-finite rotations give a non-finite direction: check isEyeTracked first.
GazeRay gazeRay(const GazeOutputData& gaze, EyeId eye);

enum VergenceStatus {
    VERGENCE_OK = 0,          // point, distance and angle are set
    VERGENCE_NOT_TRUSTED = 1, // an eye below level 3 (or not finite): all zeros
    VERGENCE_NO_POINT = 2     // both at level 3, but the rays are parallel or meet behind an
                              // eye: point and distance zeros, angle set
};

struct Vergence {
    VergenceStatus status = VERGENCE_NOT_TRUSTED;
    std::vector<float> point = std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
    float distance = 0.0f;
    float angle = 0.0f;  // radians
};

// The vergence that a GazeOutputData prints in its five vergence columns, as values. Only
// when q_right = q_left = 3 (levels 1 and 2 are not good enough):
//   point    = rayIntersectionPoint(c_r, d_r, c_l, d_l)  (midpoint of the closest approach)
//   distance = |(c_r + c_l) / 2 - point|
//   angle    = acos(d_r . d_l), in 0..pi
// Never throws for geometry: parallel or diverging rays give VERGENCE_NO_POINT.
Vergence gazeVergence(const GazeOutputData& gaze);

// The gaze of a virtual eye midway between the two:
//   origin    = (c_r + c_l) / 2
//   direction = (d_r + d_l) / |d_r + d_l|
// with both eyes tracked; with one, that eye's ray (origin c_e, direction d_e). Returns
// false, leaving `ray` untouched, when no eye is tracked. GeomUtilsError
// "tq::eod::utils::cyclopsGazeRay : gaze directions cancel out" when d_r = -d_l.
bool cyclopsGazeRay(const GazeOutputData& gaze, GazeRay& ray);

// The ray of the tracked eye with the higher quality level. Ties go to the right eye, the
// first of every per-eye pair, so the choice never flips between frames of equal quality.
// Returns false, leaving `ray` untouched, when no eye is tracked.
bool bestGazeRay(const GazeOutputData& gaze, GazeRay& ray);

// Both tracked eyes combined with their quality levels as weights w_e = q_e:
//   origin    = (w_r c_r + w_l c_l) / (w_r + w_l)
//   direction = (w_r d_r + w_l d_l) / |w_r d_r + w_l d_l|
// With one eye tracked this is that eye's ray. Returns false, leaving `ray` untouched, when
// no eye is tracked. GeomUtilsError "tq::eod::utils::mergedGazeRay : gaze directions cancel
// out" when the weighted directions sum to zero (|sum| below the float epsilon times
// w_r + w_l; the cyclops ray uses the same test with weights 1).
bool mergedGazeRay(const GazeOutputData& gaze, GazeRay& ray);

// Whether the frame tracks a face and its eyes: its head record (headOutputData()) reports
// tracking and its eye record's gaze has at least one tracked eye. A frame without those
// records is not tracking.
bool isTracking(const EngineOutputData& frame);

// Log-to-text conversion: the recording at `path` (anything io::RecordingReader opens: a log
// directory, a log file, a raw record file or a compressed container) as the table of
// io::OutputDataPrinter, the one `eod cat` prints. Only frames numbered first_frame to
// last_frame are read (through the index files where there are some). A first pass fixes
// the columns, a second prints the header and a line per frame, so the range is read twice.
// `select`, when given, sees each frame in both passes and may change it (keep some records,
// upgrade it); a frame for which it returns false is left out. Returns the number of frames
// printed. Reader errors propagate (EngineOutputDataFileError, SerializableError,
// CompressionError), after the frames read so far were printed.
std::size_t logToText(const std::string& path, std::ostream& os,
                      const std::function<bool(EngineOutputData&)>& select = nullptr,
                      unsigned int first_frame = 0,
                      unsigned int last_frame = std::numeric_limits<unsigned int>::max());

}  // namespace utils
}  // namespace eod
}  // namespace tq

#endif
