#ifndef EOD_HEADINTERSECTIONOUTPUTDATAV2_H
#define EOD_HEADINTERSECTIONOUTPUTDATAV2_H

// Second-generation intersection of the head direction with the world (id 45): the labelled
// items of IntersectionOutputBaseV2.

#include <eod/intersectionoutputbasev2.h>

namespace tq {
namespace eod {

class HeadIntersectionOutputDataV2 : public IntersectionOutputBaseV2 {
  public:
    static constexpr char THIS_OBJECT_ID = 45;
    static constexpr char HEADINTERSECTION_OUTPUT_DATA_V2_ID = 45;

    HeadIntersectionOutputDataV2() = default;
    HeadIntersectionOutputDataV2(const HeadIntersectionOutputDataV2&) = default;
    HeadIntersectionOutputDataV2& operator=(const HeadIntersectionOutputDataV2&) = default;
    ~HeadIntersectionOutputDataV2() override;
    void copyFrom(const HeadIntersectionOutputDataV2& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    HeadIntersectionOutputDataV2* clone() const override;
};

}  // namespace eod
}  // namespace tq

#endif
