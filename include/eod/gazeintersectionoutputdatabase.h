#ifndef EOD_GAZEINTERSECTIONOUTPUTDATABASE_H
#define EOD_GAZEINTERSECTIONOUTPUTDATABASE_H

// The first-generation gaze intersection, common to its two versions: V1 (id 18) has the
// fields of IntersectionOutputBase only; V2 (id 29) adds the 3D point where the gaze meets
// the intersected object. Callers use either version through this class.

#include <eod/intersectionoutputbase.h>

#include <vector>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataBase : public IntersectionOutputBase {
  public:
    // 29, the newest first-generation gaze intersection.
    static char latestGazeIntersectionObjectID();

    ~GazeIntersectionOutputDataBase() override;

    // Usage error "3D vector expected" unless 3 elements.
    void setScreenIntersectionWorldCoordinates(const std::vector<float>& world) override;
    // Usage error "2D vector expected" unless 2 elements.
    void setScreenIntersectionScreenCoordinates(const std::vector<float>& screen) override;
    // Usage error "2D vector expected" unless 2 elements.
    void setScreenIntersectionPixelCoordinates(const std::vector<int>& pixel) override;

    // A version without the field reports the origin (three zeros).
    virtual std::vector<float> gazeObjectIntersection() const;
    // Here a usage error: only a version that carries the field accepts it.
    virtual void setGazeObjectIntersection(const std::vector<float>& intersection);

    // The ten columns shared by both versions.
    void printOwnHeader(std::ostream& os) const override;

  protected:
    GazeIntersectionOutputDataBase() = default;
    GazeIntersectionOutputDataBase(const GazeIntersectionOutputDataBase&) = default;
    GazeIntersectionOutputDataBase& operator=(const GazeIntersectionOutputDataBase&) = default;

    // Copies the gaze fields of another version (the flag and sub-records stay): the
    // shared ones always, the gaze-object intersection where both versions carry it.
    virtual void assignData(const GazeIntersectionOutputDataBase& other);
};

}  // namespace eod
}  // namespace tq

#endif
