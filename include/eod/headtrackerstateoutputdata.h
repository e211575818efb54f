#ifndef EOD_HEADTRACKERSTATEOUTPUTDATA_H
#define EOD_HEADTRACKERSTATEOUTPUTDATA_H

// The state of the engine's head tracker, a number from -1 to 4 (-1 by default); the
// meaning of the numbers is the engine's. Engine-specific data (4 bytes): the state (int).
// Usually a child of EngineStateOutputData.

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class HeadTrackerStateOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 41;
    static constexpr int MIN_STATE = -1;
    static constexpr int MAX_STATE = 4;

    HeadTrackerStateOutputData() = default;
    // A state outside -1..4 throws std::invalid_argument "state invalid".
    explicit HeadTrackerStateOutputData(int state);
    HeadTrackerStateOutputData(const HeadTrackerStateOutputData&) = default;
    HeadTrackerStateOutputData& operator=(const HeadTrackerStateOutputData&) = default;
    ~HeadTrackerStateOutputData() override;
    void copyFrom(const HeadTrackerStateOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    HeadTrackerStateOutputData* clone() const override;

    int state() const { return _state; }
    // A state outside -1..4 throws std::invalid_argument "state invalid"; the record keeps
    // its state.
    void setState(int state);

    // "HT_STATE".
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    int _state = -1;
};

}  // namespace eod
}  // namespace tq

#endif
