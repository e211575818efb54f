#ifndef EOD_HEADINTERSECTIONOUTPUTDATAV1_H
#define EOD_HEADINTERSECTIONOUTPUTDATAV1_H

// First-generation intersection of the head direction with the world (id 17): the fields
// of IntersectionOutputBase, 41 bytes with a name of up to 7 characters.

#include <eod/intersectionoutputbase.h>

#include <vector>

namespace tq {
namespace eod {

class HeadIntersectionOutputDataV1 : public IntersectionOutputBase {
  public:
    static constexpr char THIS_OBJECT_ID = 17;
    static constexpr char HEADINTERSECTION_OUTPUT_DATA_V1_ID = 17;

    HeadIntersectionOutputDataV1() = default;
    HeadIntersectionOutputDataV1(const HeadIntersectionOutputDataV1&) = default;
    HeadIntersectionOutputDataV1& operator=(const HeadIntersectionOutputDataV1&) = default;
    ~HeadIntersectionOutputDataV1() override;
    // The whole record, flag and sub-records included.
    void copyFrom(const HeadIntersectionOutputDataV1& other) { *this = other; }
    // The intersection fields only, from any kind of first-generation intersection.
    void copyFrom(const IntersectionOutputBase& other) { copyIntersectionFields(other); }

    char objectID() const override { return THIS_OBJECT_ID; }
    HeadIntersectionOutputDataV1* clone() const override;

    // Usage error "screen_intersection not a 3D coordinate" unless 3 elements.
    void setScreenIntersectionWorldCoordinates(const std::vector<float>& world) override;
    // Usage error "screen_intersection not a 2D coordinate" unless 2 elements.
    void setScreenIntersectionScreenCoordinates(const std::vector<float>& screen) override;
    // Usage error "screen_intersection not a 2D coordinate" unless 2 elements.
    void setScreenIntersectionPixelCoordinates(const std::vector<int>& pixel) override;

    void printOwnHeader(std::ostream& os) const override;
};

}  // namespace eod
}  // namespace tq

#endif
