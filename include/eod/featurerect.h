#ifndef EOD_FEATURERECT_H
#define EOD_FEATURERECT_H

// A rectangle feature, such as the face, eye or mouth region. Data bytes (16): x, y,
// width, height (float each). Text columns: name + "_X", "_Y", "_WIDTH", "_HEIGHT".

#include <string>

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

    FeatureRect* clone() const override;

    float x() const { return value(0); }
    float y() const { return value(1); }
    float width() const { return value(2); }
    float height() const { return value(3); }
    // Stored as given, without a check.
    void setRect(float x, float y, float width, float height);
};

}  // namespace eod
}  // namespace tq

#endif
