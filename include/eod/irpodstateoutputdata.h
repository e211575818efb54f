#ifndef EOD_IRPODSTATEOUTPUTDATA_H
#define EOD_IRPODSTATEOUTPUTDATA_H

// The state (0 or 1) and 3D position of the infrared pod. Engine-specific data (16 bytes):
// the state (int), then position x, y, z (float each). Usually a child of
// EngineStateOutputData.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class IRPodStateOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 42;

    IRPodStateOutputData() = default;
    IRPodStateOutputData(const IRPodStateOutputData&) = default;
    IRPodStateOutputData& operator=(const IRPodStateOutputData&) = default;
    ~IRPodStateOutputData() override;
    void copyFrom(const IRPodStateOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    IRPodStateOutputData* clone() const override;

    int state() const { return _state; }
    // A state other than 0 or 1 throws std::invalid_argument "invalid state".
    void setState(int state);
    // Always three elements: x, y, z.
    const std::vector<float>& position() const { return _position; }
    // A vector of any size but 3 throws std::invalid_argument "expected 3D position".
    void setPosition(const std::vector<float>& position);

    // "IR_STATE", "IR_POS_X", "IR_POS_y", "IR_POS_X". The lower-case "y" and the repeated
    // "IR_POS_X" are part of the text format and are kept exactly as they stand.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    int _state = 0;
    std::vector<float> _position = std::vector<float>(ARRAY_SIZE_3D_DATA, 0.0f);
};

}  // namespace eod
}  // namespace tq

#endif
