#ifndef EOD_GAZEINTERSECTIONOUTPUTDATAV2_H
#define EOD_GAZEINTERSECTIONOUTPUTDATAV2_H

// Second gaze intersection record (id 29): the fields of IntersectionOutputBase, then the
// point where the gaze meets the intersected object (3 x float); 53 bytes with a name of up
// to 7 characters. Text: the ten gaze columns, then "GOI_X", "GOI_Y", "GOI_Z".

#include <eod/gazeintersectionoutputdatabase.h>

#include <vector>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataV1;

class GazeIntersectionOutputDataV2 : public GazeIntersectionOutputDataBase {
  public:
    static constexpr char THIS_OBJECT_ID = 29;
    static constexpr char GAZE_INTERSECTION_OUTPUT_DATA_ID = 29;

    GazeIntersectionOutputDataV2();
    GazeIntersectionOutputDataV2(const GazeIntersectionOutputDataV2&) = default;
    GazeIntersectionOutputDataV2& operator=(const GazeIntersectionOutputDataV2&) = default;
    ~GazeIntersectionOutputDataV2() override;
    void copyFrom(const GazeIntersectionOutputDataV2& other) { *this = other; }
    // From the other first-generation version: the gaze-object intersection is zeros.
    explicit GazeIntersectionOutputDataV2(const GazeIntersectionOutputDataV1& other);
    GazeIntersectionOutputDataV2& operator=(const GazeIntersectionOutputDataV1& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    GazeIntersectionOutputDataV2* clone() const override;

    std::vector<float> gazeObjectIntersection() const override { return _gaze_object_intersection; }
    // Usage error "3D vector expected" unless 3 elements.
    void setGazeObjectIntersection(const std::vector<float>& intersection) override;

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

  protected:
    void assignData(const GazeIntersectionOutputDataBase& other) override;

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

  private:
    // The fields after those of IntersectionOutputBase.
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    std::vector<float> _gaze_object_intersection;
};

}  // namespace eod
}  // namespace tq

#endif
