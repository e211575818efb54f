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
//
// The leaves differ only in how many values they hold, the column suffix of each and the
// checks of their setters, so this class keeps the values and does the wire form and the
// text columns for all of them.

#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

#include <eod/serializable.h>

namespace tq {
namespace eod {

class FeatureOutputData : public Serializable {
public:
  // A feature without values.
  FeatureOutputData(char object_id, const std::string& name);
  FeatureOutputData(const FeatureOutputData&) = default;
  // Copies the values of another feature of the same kind (same columns) but keeps this
  // object's id and name: they say which feature it is, and the id is its key in a parent
  // composite. A feature of another kind leaves the values as they are.
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

  unsigned int numDataBytes() const override;
  // One column per value, labelled name + suffix.
  void printLine(std::ostream& os) const override;
  void printHeader(std::ostream& os) const override;

protected:
  // A feature of N values, all invalidValue(); value i prints in the column labelled
  // name + suffixes[i]. `suffixes` is a static table of the leaf class: it outlives every
  // feature, and features of one kind share it.
  template <std::size_t N>
  FeatureOutputData(char object_id, const std::string& name, const char* const (&suffixes)[N])
      : FeatureOutputData(object_id, name, suffixes, N) {}

  float value(std::size_t i) const { return _values[i]; }
  // Stores all values at once, in member order; the caller has checked them.
  void setValues(std::initializer_list<float> values);

  void appendBuffer(std::vector<unsigned char>& buffer) const override;
  void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) override;

private:
  FeatureOutputData(char object_id, const std::string& name, const char* const* suffixes,
                    std::size_t count);

  template <class Self, class V>
  static void visitFields(Self& self, V& v);

  const char _object_id;
  std::string _name;
  const char* const* _suffixes = nullptr;
  std::vector<float> _values;
};

}  // namespace eod
}  // namespace tq

#endif
