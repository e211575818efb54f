#ifndef EOD_GAZEINTERSECTIONOUTPUTDATAV3_H
#define EOD_GAZEINTERSECTIONOUTPUTDATAV3_H

// Second-generation gaze intersection (id 44): the labelled items of IntersectionOutputBaseV2.

#include <eod/intersectionoutputbasev2.h>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataV4;

class GazeIntersectionOutputDataV3 : public IntersectionOutputBaseV2 {
  public:
    static constexpr char THIS_OBJECT_ID = 44;
    static constexpr char GAZE_INTERSECTION_OUTPUT_DATA_ID = 44;

    GazeIntersectionOutputDataV3() = default;
    GazeIntersectionOutputDataV3(const GazeIntersectionOutputDataV3&) = default;
    GazeIntersectionOutputDataV3& operator=(const GazeIntersectionOutputDataV3&) = default;
    ~GazeIntersectionOutputDataV3() override;
    void copyFrom(const GazeIntersectionOutputDataV3& other) { *this = other; }
    // From the per-eye version: every item; the eye id is lost.
    explicit GazeIntersectionOutputDataV3(const GazeIntersectionOutputDataV4& other);
    GazeIntersectionOutputDataV3& operator=(const GazeIntersectionOutputDataV4& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    GazeIntersectionOutputDataV3* clone() const override;
};

}  // namespace eod
}  // namespace tq

#endif
