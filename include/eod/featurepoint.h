#ifndef EOD_FEATUREPOINT_H
#define EOD_FEATUREPOINT_H

// A point feature, such as a pupil position. Data bytes (8): x, y (float each).
// Text columns: name + "_X", name + "_Y".

#include <string>

#include <eod/featureoutputdata.h>

namespace tq {
namespace eod {

class FeaturePoint : public FeatureOutputData {
public:
    static constexpr char RIGHT_PUPIL_ID = 23;
    static constexpr char LEFT_PUPIL_ID = 24;

    // Named IDToName(object_id); both coordinates invalidValue().
    explicit FeaturePoint(char object_id);
    FeaturePoint(const FeaturePoint&) = default;
    FeaturePoint& operator=(const FeaturePoint&) = default;
    ~FeaturePoint() override;
    void copyFrom(const FeaturePoint& other) { *this = other; }

    // "R_PUPILPOS" for RIGHT_PUPIL_ID, "L_PUPILPOS" for LEFT_PUPIL_ID, "POINT" for any other.
    static std::string IDToName(char object_id);

    FeaturePoint* clone() const override;

    float x() const { return value(0); }
    float y() const { return value(1); }
    // Each value must be invalidValue() or within 0..1. Checked in order; the first that
    // fails throws std::invalid_argument "x is not a valid value" or "y is not a valid
    // value" and the point keeps its values.
    void setPosition(float x, float y);
};

}  // namespace eod
}  // namespace tq

#endif
