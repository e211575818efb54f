#ifndef EOD_FEATUREOUTPUTDATA_H
#define EOD_FEATUREOUTPUTDATA_H

// Base of the feature leaves (FeaturePoint, FeatureLine, FeatureCircle, FeatureRect): a
// simple 2D image feature that a camera's feature finder reports, in image coordinates
// scaled to 0..1, where invalidValue() (-1) marks "no value".
//
// A feature has no object id per class: the constructor takes the id, which says which
// feature the object is (FeaturePoint::RIGHT_PUPIL_ID, FeatureRect::FACE_RECT_ID, ...),
// and objectID() returns it. The name labels the feature's text columns (name + suffix);
// it does not travel. Data bytes of a leaf: its floats in member order, 4 bytes each.

#include <ostream>
#include <string>
#include <vector>

#include <eod/serializable.h>

namespace tq {
namespace eod {

class FeatureOutputData : public Serializable {
public:
    FeatureOutputData(char object_id, const std::string& name);
    FeatureOutputData(const FeatureOutputData&) = default;
    // Copies the values of another feature but keeps this object's id and name: they say
    // which feature it is, and the id is its key in a parent composite.
    FeatureOutputData& operator=(const FeatureOutputData& other);
    ~FeatureOutputData() override;

    char objectID() const override { return _object_id; }
    FeatureOutputData* clone() const override = 0;

    const std::string& name() const { return _name; }
    void setName(const std::string& name) { _name = name; }

    // The coordinate value that means "no value".
    static float invalidValue() { return -1.0f; }
    // invalidValue() or a value within 0..1, both ends included.
    static bool isValidValue(float value);

protected:
    // The label of one text column: the name followed by `suffix`.
    std::string columnLabel(const char* suffix) const { return _name + suffix; }

private:
    const char _object_id;
    std::string _name;
};

}  // namespace eod
}  // namespace tq

#endif
