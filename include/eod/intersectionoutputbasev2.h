#ifndef EOD_INTERSECTIONOUTPUTBASEV2_H
#define EOD_INTERSECTIONOUTPUTBASEV2_H

// Second-generation intersection of a gaze or head ray with the modelled world: any number
// of intersected items, each keyed by a text label and each with an optional world point
// (3D), plane point (2D) and pixel (2D). A label gets a small index when first added; the
// points are stored under that index. Engine-specific data, variable length:
//
//   number of labels        unsigned int, then per label in label order:
//                           label (terminated string), index (int)
//   number of world points  unsigned int, then per point in index order:
//                           index (int), x, y, z (3 x float)
//   number of plane points  unsigned int, then per point: index (int), x, y (2 x float)
//   number of pixels        unsigned int, then per pixel: index (int), x, y (2 x int)
//
// An empty record is four zero counts (16 bytes). A reader rejects, as SerializableError,
// a count that the remaining bytes cannot hold, a negative label index (-1 is labelToIndex's
// "unknown"), a repeated label or label index, a point whose index names no label and a
// repeated point index, so that every record read back encodes to what it was read from.
//
// Text: "ITEM_NAME", "WORLD_X", "WORLD_Y", "WORLD_Z", "PLANE_X", "PLANE_Y", "PIXEL_X",
// "PIXEL_Y" for one item, the first label in label order ("Nothing" when there is none);
// a value the item lacks prints as zeros so that the columns stay numeric.

#include <eod/engineoutputbase.h>

#include <map>
#include <string>
#include <vector>

namespace tq {
namespace eod {

class IntersectionOutputBaseV2 : public EngineOutputBase {
  public:
    ~IntersectionOutputBaseV2() override;

    // Adds the label when it is new and stores (or replaces) the values given under it; a
    // value not given keeps what the label had. Usage errors, checked before anything is
    // stored: "label contains a NUL character" (it could not read back), "world expected to
    // be 3D point" unless world has 3 elements, "plane expected to be 2D point" unless plane
    // has 2, "pixel expected to be 3D point" unless pixel has 2.
    virtual void addIntersection(const std::string& label, const std::vector<float>& world);
    virtual void addIntersection(const std::string& label, const std::vector<float>& world,
                                 const std::vector<float>& plane);
    virtual void addIntersection(const std::string& label, const std::vector<float>& world,
                                 const std::vector<float>& plane, const std::vector<int>& pixel);

    virtual bool hasWorld(const std::string& label) const;
    virtual bool hasPlane(const std::string& label) const;
    virtual bool hasPixel(const std::string& label) const;
    // Empty when the label is unknown or lacks the value.
    virtual std::vector<float> world(const std::string& label) const;
    virtual std::vector<float> plane(const std::string& label) const;
    virtual std::vector<int> pixel(const std::string& label) const;
    // The labels, in label order.
    virtual std::vector<std::string> intersectedItems() const;
    // Removes every label and value.
    virtual void clearAllData();

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

  protected:
    IntersectionOutputBaseV2() = default;
    IntersectionOutputBaseV2(const IntersectionOutputBaseV2&) = default;
    IntersectionOutputBaseV2& operator=(const IntersectionOutputBaseV2&) = default;

    // -1 when the label is unknown.
    virtual int labelToIndex(const std::string& label) const;
    // Sum of the labels' encoded sizes (each label and its terminator).
    virtual unsigned int combinedLabelSize() const;

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

  private:
    typedef std::map<std::string, int> LabelIndices;
    typedef std::map<int, std::vector<float>> FloatPoints;
    typedef std::map<int, std::vector<int>> IntPoints;

    // Checks, then stores; plane and pixel may be null.
    void storeIntersection(const std::string& label, const std::vector<float>& world,
                           const std::vector<float>* plane, const std::vector<int>* pixel);
    // True when the label was new. A new label gets the number of labels already known, or,
    // when indices read from bytes already hold that number, the next free index above it.
    virtual bool addLabelIndex(const std::string& label, int& index);
    bool indexInUse(int index) const;

    LabelIndices _label_indices;
    FloatPoints _world_points;
    FloatPoints _plane_points;
    IntPoints _pixels;
};

}  // namespace eod
}  // namespace tq

#endif
