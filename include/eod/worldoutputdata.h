#ifndef EOD_WORLDOUTPUTDATA_H
#define EOD_WORLDOUTPUTDATA_H

// The first-generation intersections of one frame (id 19): no fields of its own; the gaze
// intersection (GazeIntersectionOutputDataV1 or V2) and the HeadIntersectionOutputDataV1
// are sub-records.

#include <eod/engineoutputbase.h>

#include <boost/shared_ptr.hpp>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataBase;
class HeadIntersectionOutputDataV1;

class WorldOutputData : public EngineOutputBase {
  public:
    static constexpr char THIS_OBJECT_ID = 19;
    static constexpr char WORLD_OUTPUT_DATA_ID = 19;

    WorldOutputData() = default;
    WorldOutputData(const WorldOutputData&) = default;
    WorldOutputData& operator=(const WorldOutputData&) = default;
    ~WorldOutputData() override;
    void copyFrom(const WorldOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    WorldOutputData* clone() const override;

    // The gaze intersection child, the newest version first; null when there is none.
    boost::shared_ptr<GazeIntersectionOutputDataBase> gazeIntersectionOutputData();
    boost::shared_ptr<GazeIntersectionOutputDataBase const> gazeIntersectionOutputData() const;
    // Null when there is none.
    boost::shared_ptr<HeadIntersectionOutputDataV1> headIntersectionOutputData();
    boost::shared_ptr<HeadIntersectionOutputDataV1 const> headIntersectionOutputData() const;

    // No columns of its own.
    void printOwnHeader(std::ostream&) const override {}
    void printOwnData(std::ostream&) const override {}
};

}  // namespace eod
}  // namespace tq

#endif
