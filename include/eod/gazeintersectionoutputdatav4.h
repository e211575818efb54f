#ifndef EOD_GAZEINTERSECTIONOUTPUTDATAV4_H
#define EOD_GAZEINTERSECTIONOUTPUTDATAV4_H

// Second-generation gaze intersection of one eye (id 39): the labelled items of
// IntersectionOutputBaseV2, then the eye id (one byte) of the eye whose gaze made them.
// A parent may hold one such record per eye. Text: "EYE_ID", then the columns of
// IntersectionOutputBaseV2.

#include <eod/intersectionoutputbasev2.h>

namespace tq {
namespace eod {

class GazeIntersectionOutputDataV3;

class GazeIntersectionOutputDataV4 : public IntersectionOutputBaseV2 {
  public:
    static constexpr char THIS_OBJECT_ID = 39;

    GazeIntersectionOutputDataV4() = default;
    GazeIntersectionOutputDataV4(const GazeIntersectionOutputDataV4&) = default;
    GazeIntersectionOutputDataV4& operator=(const GazeIntersectionOutputDataV4&) = default;
    ~GazeIntersectionOutputDataV4() override;
    void copyFrom(const GazeIntersectionOutputDataV4& other) { *this = other; }
    // From the version without an eye: every item, eye id BOTH_EYES (the face's gaze).
    explicit GazeIntersectionOutputDataV4(const GazeIntersectionOutputDataV3& other);
    GazeIntersectionOutputDataV4& operator=(const GazeIntersectionOutputDataV3& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    GazeIntersectionOutputDataV4* clone() const override;
    // One record per eye may sit side by side in a parent.
    bool forbidDuplicateSiblings() const override { return false; }

    // RIGHT_EYE until set.
    EyeId eyeId() const { return _eye_id; }
    // Usage error "eye_id should be either LEFT_EYE, RIGHT_EYE or BOTH_EYES" for any other
    // value.
    void setEyeId(EyeId eye_id);

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

  protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    // An eye id byte other than 0, 1 or 2 is rejected as SerializableError.
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

  private:
    EyeId _eye_id = RIGHT_EYE;
};

}  // namespace eod
}  // namespace tq

#endif
