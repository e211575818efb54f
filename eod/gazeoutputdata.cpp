#include <eod/gazeoutputdata.h>

#include <cassert>

#include <eod/utils/geomutils.h>

#include "eod/detail/fieldcodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

// Levels 1 and 2 are deliberately not good enough for vergence.
const char VERGENCE_GAZE_QUALITY_LEVEL = 3;

// The records hold pitch/yaw in float; the rotation code works in double.
std::vector<float> gazeDirection(const std::vector<float>& pitch_yaw) {
    const std::vector<double> direction =
        utils::directionFromPitchYaw(std::vector<double>(pitch_yaw.begin(), pitch_yaw.end()));
    return std::vector<float>(direction.begin(), direction.end());
}

// The stream's word that asks for empty cells instead of a geometry error.
int vergenceErrorsSlot() {
    static const int slot = std::ios_base::xalloc();
    return slot;
}

struct Vergence {
    std::vector<float> point = std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
    float distance = 0.0f;
    float angle = 0.0f;
    bool has_point = true;
};

Vergence computeVergence(const GazeOutputData& gaze, std::ostream& os) {
    using utils::operator+;
    using utils::operator-;
    using utils::operator*;
    Vergence vergence;
    if (gaze.gazeQualityLevel(RIGHT_EYE) != VERGENCE_GAZE_QUALITY_LEVEL ||
        gaze.gazeQualityLevel(LEFT_EYE) != VERGENCE_GAZE_QUALITY_LEVEL) {
        return vergence;
    }
    const std::vector<float>& right_centre = gaze.eyeballCentre(RIGHT_EYE);
    const std::vector<float>& left_centre = gaze.eyeballCentre(LEFT_EYE);
    const std::vector<float> right_direction = gazeDirection(gaze.gazeRotation(RIGHT_EYE));
    const std::vector<float> left_direction = gazeDirection(gaze.gazeRotation(LEFT_EYE));
    vergence.angle = utils::vectorIntersectionAngle(right_direction, left_direction);
    try {
        vergence.point =
            utils::rayIntersectionPoint(right_centre, right_direction, left_centre, left_direction);
    } catch (const utils::GeomUtilsError&) {
        if (os.iword(vergenceErrorsSlot()) == 0) throw;
        vergence.has_point = false;
        return vergence;
    }
    vergence.distance = utils::length(0.5f * (right_centre + left_centre) - vergence.point);
    return vergence;
}

void writeVergence(detail::Columns& columns, const Vergence& vergence) {
    if (vergence.has_point) {
        columns << vergence.point << vergence.distance;
    } else {
        columns << "" << "" << "" << "";
    }
    columns << vergence.angle;
}

}  // namespace

GazeOutputData::GazeOutputData()
    : _gaze_quality_level(ARRAY_SIZE_PAIR_DATA, char(NO_TRACKING)),
      _eyeball_centre(ARRAY_SIZE_PAIR_DATA, std::vector<float>(ARRAY_SIZE_3D_DATA)),
      _gaze_rotation(ARRAY_SIZE_PAIR_DATA, std::vector<float>(ARRAY_SIZE_2D_DATA)) {}

GazeOutputData::~GazeOutputData() = default;

void GazeOutputData::copyFrom(const GazeOutputData& other) { *this = other; }

GazeOutputData* GazeOutputData::clone() const { return new GazeOutputData(*this); }

GazeQualityLevel GazeOutputData::gazeQualityLevel(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return static_cast<GazeQualityLevel>(_gaze_quality_level[eye_id]);
}

const std::vector<float>& GazeOutputData::eyeballCentre(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _eyeball_centre[eye_id];
}

const std::vector<float>& GazeOutputData::gazeRotation(int eye_id) const {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    return _gaze_rotation[eye_id];
}

void GazeOutputData::setGazeQualityLevel(int eye_id, GazeQualityLevel gql) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(gql >= NO_TRACKING && gql < NUM_GAZE_QUALITY_LEVELS,
                "gql not in the range NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1");
    _gaze_quality_level[eye_id] = static_cast<char>(gql);
}

void GazeOutputData::setEyeballCentre(int eye_id, const std::vector<float>& centre) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(centre.size() == ARRAY_SIZE_3D_DATA, "eyeball_centre 3D point expected");
    _eyeball_centre[eye_id] = centre;
}

void GazeOutputData::setGazeRotationPitchYaw(int eye_id, const std::vector<float>& pitch_yaw) {
    EOD_REQUIRE_SINGLE_EYE(eye_id);
    EOD_REQUIRE(pitch_yaw.size() == ARRAY_SIZE_2D_DATA, "gaze_rot 2D rotation vector expected");
    _gaze_rotation[eye_id] = pitch_yaw;
}

const std::string& GazeOutputData::gazeQualityLevelName(GazeQualityLevel gql) {
    static const std::string names[NUM_GAZE_QUALITY_LEVELS] = {"GQL 0", "GQL 1", "GQL 2",
                                                               "GQL 3"};
    EOD_REQUIRE(gql >= NO_TRACKING && gql < NUM_GAZE_QUALITY_LEVELS,
                "gql not in the range NO_TRACKING..NUM_GAZE_QUALITY_LEVELS-1");
    return names[gql];
}

void GazeOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "GAZE_QUAL_R" << "EYEBALL_R_X" << "EYEBALL_R_Y" << "EYEBALL_R_Z"
                        << "GAZE_ROT_R_X" << "GAZE_ROT_R_Y" << "GAZE_QUAL_L" << "EYEBALL_L_X"
                        << "EYEBALL_L_Y" << "EYEBALL_L_Z" << "GAZE_ROT_L_X" << "GAZE_ROT_L_Y"
                        << "GAZE_CALIB" << "SACCADE" << "VERGE_PNT_X" << "VERGE_PNT_Y"
                        << "VERGE_PNT_Z" << "VERGE_DIST" << "VERGE_ANGLE";
}

void GazeOutputData::printOwnData(std::ostream& os) const {
    // Computed first: when the geometry fails, none of this record's columns is written.
    const Vergence vergence = computeVergence(*this, os);
    detail::Columns columns(os);
    columns << _gaze_quality_level[RIGHT_EYE] << _eyeball_centre[RIGHT_EYE]
            << _gaze_rotation[RIGHT_EYE] << _gaze_quality_level[LEFT_EYE]
            << _eyeball_centre[LEFT_EYE] << _gaze_rotation[LEFT_EYE] << _gaze_calibrated
            << _saccade;
    writeVergence(columns, vergence);
}

void GazeOutputData::writeVergenceFields(std::ostream& os) const {
    const Vergence vergence = computeVergence(*this, os);
    detail::Columns columns(os);
    writeVergence(columns, vergence);
}

void GazeOutputData::setVergenceErrorsAsEmptyCells(std::ostream& os, bool empty_cells) {
    os.iword(vergenceErrorsSlot()) = empty_cells ? 1 : 0;
}

template <class Self, class V>
void GazeOutputData::visitFields(Self& self, V& v) {
    assert(self._gaze_quality_level.size() == ARRAY_SIZE_PAIR_DATA);
    assert(self._eyeball_centre.size() == ARRAY_SIZE_PAIR_DATA);
    assert(self._gaze_rotation.size() == ARRAY_SIZE_PAIR_DATA);
    for (int eye_id : {RIGHT_EYE, LEFT_EYE}) {
        v(self._gaze_quality_level[eye_id]);
        v(self._eyeball_centre[eye_id]);
        v(self._gaze_rotation[eye_id]);
    }
    v(self._gaze_calibrated);
    v(self._saccade);
}

unsigned int GazeOutputData::numEngineSpecificDataBytes() const {
    detail::FieldSizer s;
    visitFields(*this, s);
    return s.bytes;
}

void GazeOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::FieldWriter w{buffer};
    visitFields(*this, w);
}

void GazeOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                            int& read_pos) {
    detail::FieldReader r{buffer, read_pos};
    visitFields(*this, r);
}

}  // namespace eod
}  // namespace tq
