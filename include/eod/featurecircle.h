#ifndef EOD_FEATURECIRCLE_H
#define EOD_FEATURECIRCLE_H

// A circle feature. Data bytes (12): x, y, radius (float each).
// Text columns: name + "_X", "_Y", "_RADIUS".
//
// The library reserves no object id for circles: a circle carries whatever id its creator
// gives it. A parent can rebuild only records it can identify by id, so a circle comes
// back from bytes only when the application has registered a creation function for its id
// with SerializableFactory (one that returns a FeatureCircle of that id); otherwise
// readers skip it whole. The library's feature ids 21 to 28 belong to sets, points and
// rectangles, and the feature containers refuse a circle under them.

#include <string>

#include <eod/featureoutputdata.h>

namespace tq {
namespace eod {

class FeatureCircle : public FeatureOutputData {
public:
    // All values invalidValue().
    explicit FeatureCircle(char object_id, const std::string& name = "CIRCLE");
    FeatureCircle(const FeatureCircle&) = default;
    FeatureCircle& operator=(const FeatureCircle&) = default;
    ~FeatureCircle() override;
    void copyFrom(const FeatureCircle& other) { *this = other; }

    FeatureCircle* clone() const override;

    float x() const { return value(0); }
    float y() const { return value(1); }
    float radius() const { return value(2); }
    // Each value must be invalidValue() or within 0..1. Checked in order; the first that
    // fails throws std::invalid_argument "<x|y|radius> not invalidValue() and outside the
    // range 0..1" and the circle keeps its values.
    void setGeometry(float x, float y, float radius);
};

}  // namespace eod
}  // namespace tq

#endif
