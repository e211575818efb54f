#ifndef EOD_FEATURESETSBYCAMERA_H
#define EOD_FEATURESETSBYCAMERA_H

// The image features of all cameras: one FeatureSet per camera as children, camera A's
// under FeatureSet::FEATURE_SET_CAM_A_ID (21) and camera B's under FEATURE_SET_CAM_B_ID
// (22). No engine-specific data and no text columns of its own.
//
// It accepts children as every engine record does, except that under the library's feature
// ids 21 to 28 only the class rebuilt for that id on reading is accepted (a FeatureSet for
// 21 and 22); anything else there is refused with SerializableError
// "FeatureSetsByCamera::addSubObject - object id reserved for another feature class".
// Reading rebuilds children of the ids 21 to 28 itself, since the registry does not know
// them; every other child goes through SerializableFactory.

#include <ostream>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/featureset.h>

namespace tq {
namespace eod {

class FeatureSetsByCamera : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 20;
    static constexpr char FEATURE_SETS_BY_CAMERA_ID = 20;

    FeatureSetsByCamera() = default;
    FeatureSetsByCamera(const FeatureSetsByCamera&) = default;
    FeatureSetsByCamera& operator=(const FeatureSetsByCamera&) = default;
    ~FeatureSetsByCamera() override;
    void copyFrom(const FeatureSetsByCamera& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    FeatureSetsByCamera* clone() const override;

    // Camera 0 is set A (id 21), camera 1 set B (id 22); null when that set is missing.
    // Any other camera number throws std::invalid_argument "invalid camera id".
    boost::shared_ptr<FeatureSet> featureSetForCamera(int camera);
    boost::shared_ptr<FeatureSet const> featureSetForCamera(int camera) const;

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void doAddSubObject(const boost::shared_ptr<Serializable>& object) override;
    boost::shared_ptr<Serializable> readSubObject(const std::vector<unsigned char>& buffer,
                                                  int& read_pos) override;
    boost::shared_ptr<Serializable> readSubObjectWithStatus(
        const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) override;

  private:
    static char setIdForCamera(int camera);
};

}  // namespace eod
}  // namespace tq

#endif
