#ifndef EOD_FEATURESET_H
#define EOD_FEATURESET_H

// The image features one camera's feature finder reported: its children are feature
// records found by their feature ids (the face, eye and mouth rectangles, the pupil
// points). Like a feature, a set has no object id per class: the constructor takes it,
// FEATURE_SET_CAM_A_ID or FEATURE_SET_CAM_B_ID for the library's per-camera sets.
// No engine-specific data.
//
// What a set accepts as children (addSubObject):
// - feature records (FeatureOutputData). Under the library's feature ids 21 to 28 only the
//   class rebuilt for that id on reading is accepted (FeaturePoint for 23 and 24,
//   FeatureRect for 25 to 28, FeatureSet for 21 and 22); anything else there would be
//   written but could not be read back as itself, and is refused with SerializableError
//   "FeatureSet::addSubObject - object id reserved for another feature class";
// - any other engine output record, as every engine record accepts them (for example a
//   CompressedSerializableToken standing in for a record that travels compressed).
// Other plain Serializable records are refused as EngineOutputBase refuses them.
//
// Reading: the registry does not know the feature ids, so a set rebuilds children of the
// ids 21 to 28 itself; every other child goes through SerializableFactory, so it comes
// back when its id is registered (lines and circles under an application's own ids, for
// instance) and is skipped whole otherwise.

#include <ostream>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/featurepoint.h>
#include <eod/featurerect.h>

namespace tq {
namespace eod {

class FeatureSet : public EngineOutputBase {
public:
    static constexpr char FEATURE_SET_CAM_A_ID = 21;
    static constexpr char FEATURE_SET_CAM_B_ID = 22;

    explicit FeatureSet(char object_id);
    FeatureSet(const FeatureSet&) = default;
    // Copies the other set's flag and (deeply) its features but keeps this set's id, its
    // identity and its key in a parent.
    FeatureSet& operator=(const FeatureSet& other);
    ~FeatureSet() override;
    void copyFrom(const FeatureSet& other) { *this = other; }

    char objectID() const override { return _object_id; }
    FeatureSet* clone() const override;

    // The child of the feature id, or null when the set has none.
    boost::shared_ptr<FeatureRect> faceRect();
    boost::shared_ptr<FeatureRect const> faceRect() const;
    boost::shared_ptr<FeatureRect> rightEyeRect();
    boost::shared_ptr<FeatureRect const> rightEyeRect() const;
    boost::shared_ptr<FeatureRect> leftEyeRect();
    boost::shared_ptr<FeatureRect const> leftEyeRect() const;
    boost::shared_ptr<FeatureRect> mouthRect();
    boost::shared_ptr<FeatureRect const> mouthRect() const;
    boost::shared_ptr<FeaturePoint> rightPupilPos();
    boost::shared_ptr<FeaturePoint const> rightPupilPos() const;
    boost::shared_ptr<FeaturePoint> leftPupilPos();
    boost::shared_ptr<FeaturePoint const> leftPupilPos() const;
    // RIGHT_EYE (0) or LEFT_EYE (1); any other id throws std::invalid_argument
    // "eye_id neither LEFT_EYE nor RIGHT_EYE".
    boost::shared_ptr<FeaturePoint> pupilPosForEye(int eye_id);
    boost::shared_ptr<FeaturePoint const> pupilPosForEye(int eye_id) const;

    // One column, "FEATURE_SET_ID", with the set's object id, so that the columns of two
    // cameras' features can be told apart; the features' columns follow.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void doAddSubObject(const boost::shared_ptr<Serializable>& object) override;
    boost::shared_ptr<Serializable> readSubObject(const std::vector<unsigned char>& buffer,
                                                  int& read_pos) override;
    boost::shared_ptr<Serializable> readSubObjectWithStatus(
        const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) override;

  private:
    static char pupilIdForEye(int eye_id);

    const char _object_id;
};

}  // namespace eod
}  // namespace tq

#endif
