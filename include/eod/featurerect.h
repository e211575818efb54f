#ifndef EOD_FEATURERECT_H
#define EOD_FEATURERECT_H

// A rectangle feature, such as the face, eye or mouth region. Data bytes (16): x, y,
// width, height (float each). Text columns: name + "_X", "_Y", "_WIDTH", "_HEIGHT".

#include <ostream>
#include <string>
#include <vector>

#include <eod/featureoutputdata.h>

namespace tq {
namespace eod {

class FeatureRect : public FeatureOutputData {
public:
    static constexpr char FACE_RECT_ID = 25;
    static constexpr char RIGHT_EYE_RECT_ID = 26;
    static constexpr char LEFT_EYE_RECT_ID = 27;
    static constexpr char MOUTH_RECT_ID = 28;

    // Named IDToName(object_id); all values invalidValue().
    explicit FeatureRect(char object_id);
    FeatureRect(const FeatureRect&) = default;
    FeatureRect& operator=(const FeatureRect&) = default;
    ~FeatureRect() override;
    void copyFrom(const FeatureRect& other) { *this = other; }

    // "FACERECT", "REYERECT", "LEYERECT", "MOUTRECT" for the four ids above (all eight
    // letters long), "RECT" for any other.
    static std::string IDToName(char object_id);

    unsigned int numDataBytes() const override;
    FeatureRect* clone() const override;
    void printLine(std::ostream& os) const override;
    void printHeader(std::ostream& os) const override;

    float x() const { return _x; }
    float y() const { return _y; }
    float width() const { return _width; }
    float height() const { return _height; }
    // Stored as given, without a check.
    void setRect(float x, float y, float width, float height);

protected:
    void appendBuffer(std::vector<unsigned char>& buffer) const override;
    void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    float _x = invalidValue();
    float _y = invalidValue();
    float _width = invalidValue();
    float _height = invalidValue();
};

}  // namespace eod
}  // namespace tq

#endif
