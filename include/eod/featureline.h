#ifndef EOD_FEATURELINE_H
#define EOD_FEATURELINE_H

// A line feature between two end points. Data bytes (16): x1, y1, x2, y2 (float each).
// Text columns: name + "_X1", "_Y1", "_X2", "_Y2".
//
// The library reserves no object id for lines: a line carries whatever id its creator
// gives it. A parent can rebuild only records it can identify by id, so a line comes back
// from bytes only when the application has registered a creation function for its id with
// SerializableFactory (one that returns a FeatureLine of that id); otherwise readers skip
// it whole. The library's feature ids 21 to 28 belong to sets, points and rectangles, and
// the feature containers refuse a line under them.

#include <string>

#include <eod/featureoutputdata.h>

namespace tq {
namespace eod {

class FeatureLine : public FeatureOutputData {
public:
    // All coordinates invalidValue().
    explicit FeatureLine(char object_id, const std::string& name = "LINE");
    FeatureLine(const FeatureLine&) = default;
    FeatureLine& operator=(const FeatureLine&) = default;
    ~FeatureLine() override;
    void copyFrom(const FeatureLine& other) { *this = other; }

    FeatureLine* clone() const override;

    float x1() const { return value(0); }
    float y1() const { return value(1); }
    float x2() const { return value(2); }
    float y2() const { return value(3); }
    // Each value must be invalidValue() or within 0..1. Checked in order; the first that
    // fails throws std::invalid_argument "<x1|y1|x2|y2> is not a valid value" and the line
    // keeps its values.
    void setEndPoints(float x1, float y1, float x2, float y2);
};

}  // namespace eod
}  // namespace tq

#endif
