#ifndef EOD_WORLDOUTPUTDATAV2_H
#define EOD_WORLDOUTPUTDATAV2_H

// The second-generation intersections of one frame (id 43): no fields of its own; the
// GazeIntersectionOutputDataV3, the per-eye GazeIntersectionOutputDataV4 records (several
// may sit side by side) and the HeadIntersectionOutputDataV2 are sub-records.

#include <eod/engineoutputbase.h>

#include <boost/shared_ptr.hpp>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataV3;
class GazeIntersectionOutputDataV4;
class HeadIntersectionOutputDataV2;

class WorldOutputDataV2 : public EngineOutputBase {
  public:
    static constexpr char THIS_OBJECT_ID = 43;
    static constexpr char WORLD_OUTPUT_DATA_V2_ID = 43;

    WorldOutputDataV2() = default;
    WorldOutputDataV2(const WorldOutputDataV2&) = default;
    WorldOutputDataV2& operator=(const WorldOutputDataV2&) = default;
    ~WorldOutputDataV2() override;
    void copyFrom(const WorldOutputDataV2& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    WorldOutputDataV2* clone() const override;

    // Null when there is none. The per-eye V4 records are sub-objects of their own id.
    boost::shared_ptr<GazeIntersectionOutputDataV3> gazeIntersectionOutputData();
    boost::shared_ptr<GazeIntersectionOutputDataV3 const> gazeIntersectionOutputData() const;
    // The per-eye record of the gaze of eye_id (RIGHT_EYE, LEFT_EYE or BOTH_EYES): the first
    // V4 sub-record whose eyeId() is eye_id, null when there is none.
    boost::shared_ptr<GazeIntersectionOutputDataV4> gazeIntersectionOutputDataV4(EyeId eye_id);
    boost::shared_ptr<GazeIntersectionOutputDataV4 const> gazeIntersectionOutputDataV4(
        EyeId eye_id) const;
    boost::shared_ptr<HeadIntersectionOutputDataV2> headIntersectionOutputData();
    boost::shared_ptr<HeadIntersectionOutputDataV2 const> headIntersectionOutputData() const;

    // No columns of its own.
    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

}  // namespace eod
}  // namespace tq

#endif
