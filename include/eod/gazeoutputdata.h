#ifndef EOD_GAZEOUTPUTDATA_H
#define EOD_GAZEOUTPUTDATA_H

// Where each gaze points and how good it is. Engine-specific data, 44 bytes: for the right
// eye and then the left eye, gaze quality level (char), eyeball centre x, y, z and gaze
// rotation pitch, yaw (floats); then gaze calibrated and saccade (bools).
//
// The gaze rotation (pitch, yaw) is in radians in the convention of
// utils::directionFromPitchYaw. Per-eye values take eye_id RIGHT_EYE or LEFT_EYE ("eye_id
// neither LEFT_EYE nor RIGHT_EYE"). A failed setter (std::invalid_argument) leaves the record
// unchanged. Quality levels read from bytes are kept as read, even outside 0..3: such a
// level has no name and is never good enough for vergence.

#include <ostream>
#include <string>
#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

// 0 (no tracking) to 3 (best). With a fixed underlying type any stored byte converts to it.
enum GazeQualityLevel : int { NO_TRACKING = 0, NUM_GAZE_QUALITY_LEVELS = 4 };

class GazeOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 13;
    static constexpr char GAZE_OUTPUT_DATA_ID = 13;

    GazeOutputData();
    GazeOutputData(const GazeOutputData&) = default;
    GazeOutputData& operator=(const GazeOutputData&) = default;
    ~GazeOutputData() override;
    void copyFrom(const GazeOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    GazeOutputData* clone() const override;

    GazeQualityLevel gazeQualityLevel(int eye_id) const;
    const std::vector<float>& eyeballCentre(int eye_id) const;
    // (pitch, yaw).
    const std::vector<float>& gazeRotation(int eye_id) const;
    bool gazeCalibrated() const { return _gaze_calibrated; }
    bool saccade() const { return _saccade; }

    // NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1 ("gql not in the range
    // NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1").
    void setGazeQualityLevel(int eye_id, GazeQualityLevel gql);
    // "eyeball_centre 3D point expected".
    void setEyeballCentre(int eye_id, const std::vector<float>& centre);
    // (pitch, yaw) ("gaze_rot 2D rotation vector expected").
    void setGazeRotationPitchYaw(int eye_id, const std::vector<float>& pitch_yaw);
    void setGazeCalibrated(bool calibrated) { _gaze_calibrated = calibrated; }
    void setSaccade(bool saccade) { _saccade = saccade; }

    // "GQL 0" to "GQL 3"; other levels are a usage error (same message as the setter).
    static const std::string& gazeQualityLevelName(GazeQualityLevel gql);

    // The stored columns, then the five vergence columns of writeVergenceFields.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

    // Five columns computed from the stored gaze: vergence point x, y, z, vergence distance
    // and vergence angle. Only when both eyes are at level 3: the point is where the two gaze
    // rays (from the eyeball centres along their pitch/yaw directions) come closest
    // (utils::rayIntersectionPoint), the distance is from the midpoint of the eyeball centres
    // to that point, and the angle (radians) is between the two directions. Otherwise all
    // five are 0. Rays that are parallel or that come closest behind an eye have no vergence
    // point: the GeomUtilsError of rayIntersectionPoint propagates, and nothing of the
    // columns is written (printOwnData then writes none of the record's columns).
    void writeVergenceFields(std::ostream& os) const;

    // For one stream, writes rays without a vergence point as empty point and distance cells
    // (NaN to a table reader) next to the angle instead of throwing, so that a program that
    // prints whole recordings keeps every line and every column in place. Off by default.
    static void setVergenceErrorsAsEmptyCells(std::ostream& os, bool empty_cells);

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    std::vector<char> _gaze_quality_level;
    std::vector<std::vector<float>> _eyeball_centre;
    std::vector<std::vector<float>> _gaze_rotation;
    bool _gaze_calibrated = false;
    bool _saccade = false;
};

}  // namespace eod
}  // namespace tq

#endif
