#ifndef EOD_GAZEINTERSECTIONOUTPUTDATAV1_H
#define EOD_GAZEINTERSECTIONOUTPUTDATAV1_H

// First gaze intersection record (id 18): the fields of IntersectionOutputBase, 41 bytes
// with a name of up to 7 characters.

#include <eod/gazeintersectionoutputdatabase.h>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataV2;

class GazeIntersectionOutputDataV1 : public GazeIntersectionOutputDataBase {
  public:
    static constexpr char THIS_OBJECT_ID = 18;
    static constexpr char GAZE_INTERSECTION_OUTPUT_DATA_ID = 18;

    GazeIntersectionOutputDataV1() = default;
    GazeIntersectionOutputDataV1(const GazeIntersectionOutputDataV1&) = default;
    GazeIntersectionOutputDataV1& operator=(const GazeIntersectionOutputDataV1&) = default;
    ~GazeIntersectionOutputDataV1() override;
    void copyFrom(const GazeIntersectionOutputDataV1& other) { *this = other; }
    // From the other first-generation version: its gaze-object intersection is lost.
    explicit GazeIntersectionOutputDataV1(const GazeIntersectionOutputDataV2& other);
    GazeIntersectionOutputDataV1& operator=(const GazeIntersectionOutputDataV2& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    GazeIntersectionOutputDataV1* clone() const override;
};

}  // namespace eod
}  // namespace tq

#endif
