#ifndef EOD_PUPILOUTPUTDATA_H
#define EOD_PUPILOUTPUTDATA_H

// Pupil centre and diameter per eye. Engine-specific data, 32 bytes: right pupil x, y, z,
// right diameter, left pupil x, y, z, left diameter (floats).
//
// Per-eye values take eye_id RIGHT_EYE or LEFT_EYE ("eye_id neither LEFT_EYE nor
// RIGHT_EYE"). A failed setter (std::invalid_argument) leaves the record unchanged.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class PupilOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 14;
    static constexpr char PUPIL_OUTPUT_DATA_ID = 14;

    PupilOutputData();
    PupilOutputData(const PupilOutputData&) = default;
    PupilOutputData& operator=(const PupilOutputData&) = default;
    ~PupilOutputData() override;
    void copyFrom(const PupilOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    PupilOutputData* clone() const override;

    const std::vector<float>& pupilPosition(int eye_id) const;
    float pupilDiameter(int eye_id) const;

    // "pupil_position 3D point expected".
    void setPupilPosition(int eye_id, const std::vector<float>& position);
    // >= 0; NaN fails ("pupil_diameter less than zero").
    void setPupilDiameter(int eye_id, float diameter);

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    std::vector<std::vector<float>> _pupil_position;
    std::vector<float> _pupil_diameter;
};

}  // namespace eod
}  // namespace tq

#endif
