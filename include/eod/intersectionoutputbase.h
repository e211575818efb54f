#ifndef EOD_INTERSECTIONOUTPUTBASE_H
#define EOD_INTERSECTIONOUTPUTBASE_H

// First-generation intersection of a gaze or head ray with the modelled world: the one
// object hit (index and short name) and where the ray meets the screen. Engine-specific
// data, in this order:
//
//   intersection object index        int
//   intersection object name         padString(name, MAX_OBJ_NAME_LENGTH) as a terminated
//                                    string: 8 bytes for names of up to 7 characters; a
//                                    longer name is written whole, not truncated
//   intersects screen                bool
//   screen intersection world        3 x float
//   screen intersection screen       2 x float
//   screen intersection pixel        2 x int
//
// 41 bytes with a name of up to 7 characters. The name is unpadded after reading, so
// leading spaces of a name do not survive the wire, nor does anything after a NUL byte.
//
// The size-checked setters are pure here: the gaze and head records word their errors
// differently.

#include <eod/engineoutputbase.h>

#include <string>
#include <vector>

namespace tq {
namespace eod {

class IntersectionOutputBase : public EngineOutputBase {
  public:
    static constexpr int MAX_OBJ_NAME_LENGTH = 7;

    // "nothing": the name of a ray that hits no object.
    static const std::string& defaultObjectName();
    // "Screen(1)": the name of the default screen.
    static const std::string& defaultScreenName();

    ~IntersectionOutputBase() override;

    virtual int intersectionObjectIndex() const { return _intersection_object_index; }
    virtual void setIntersectionObjectIndex(int index) { _intersection_object_index = index; }
    virtual std::string intersectionObjectName() const { return _intersection_object_name; }
    // The name travels padded to MAX_OBJ_NAME_LENGTH characters with leading blanks, which
    // reading removes. Usage error "name contains a NUL character": it could not read back.
    virtual void setIntersectionObjectName(const std::string& name);
    virtual bool intersectsScreen() const { return _intersects_screen; }
    virtual void setIntersectsScreen(bool intersects) { _intersects_screen = intersects; }

    virtual const std::vector<float>& screenIntersectionWorldCoordinates() const {
        return _screen_intersection_world_coords;
    }
    virtual const std::vector<float>& screenIntersectionScreenCoordinates() const {
        return _screen_intersection_screen_coords;
    }
    virtual const std::vector<int>& screenIntersectionPixelCoordinates() const {
        return _screen_intersection_pixel_coords;
    }
    // 3 elements.
    virtual void setScreenIntersectionWorldCoordinates(const std::vector<float>& world) = 0;
    // 2 elements.
    virtual void setScreenIntersectionScreenCoordinates(const std::vector<float>& screen) = 0;
    // 2 elements.
    virtual void setScreenIntersectionPixelCoordinates(const std::vector<int>& pixel) = 0;

    // The ten values, in the order of the wire fields.
    void printOwnData(std::ostream& os) const override;

  protected:
    IntersectionOutputBase();
    IntersectionOutputBase(const IntersectionOutputBase&) = default;
    IntersectionOutputBase& operator=(const IntersectionOutputBase&) = default;

    // Copies the intersection fields only, not the flag or the sub-records: the source may
    // be another kind of intersection record.
    void copyIntersectionFields(const IntersectionOutputBase& other);

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

    // Protected so that the gaze and head records can store what their checks accepted.
    int _intersection_object_index = -1;
    std::string _intersection_object_name;
    bool _intersects_screen = false;
    std::vector<float> _screen_intersection_world_coords;
    std::vector<float> _screen_intersection_screen_coords;
    std::vector<int> _screen_intersection_pixel_coords;

  private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);
};

}  // namespace eod
}  // namespace tq

#endif
