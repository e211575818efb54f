#ifndef EOD_ENGINESTATEOUTPUTDATA_H
#define EOD_ENGINESTATEOUTPUTDATA_H

// The tracking engine's own state, a number from -1 to 1 (-1 by default); the meaning of
// the numbers is the engine's. Engine-specific data (4 bytes): the state (int). Its
// optional children are the head tracker's state (id 41) and the infrared pod's (id 42).

#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/irpodstateoutputdata.h>

namespace tq {
namespace eod {

class EngineStateOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 40;
    static constexpr int MIN_STATE = -1;
    static constexpr int MAX_STATE = 1;

    EngineStateOutputData() = default;
    // A state outside -1..1 throws std::invalid_argument "unknown state".
    explicit EngineStateOutputData(int state);
    EngineStateOutputData(const EngineStateOutputData&) = default;
    EngineStateOutputData& operator=(const EngineStateOutputData&) = default;
    ~EngineStateOutputData() override;
    void copyFrom(const EngineStateOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    EngineStateOutputData* clone() const override;

    int state() const { return _state; }
    // A state outside -1..1 throws std::invalid_argument "unknown state"; the record keeps
    // its state.
    void setState(int state);

    // The child of id 41 / 42, or null when there is none.
    boost::shared_ptr<HeadTrackerStateOutputData> headtrackerStateOutputData();
    boost::shared_ptr<HeadTrackerStateOutputData const> headtrackerStateOutputData() const;
    boost::shared_ptr<IRPodStateOutputData> irPodStateOutputData();
    boost::shared_ptr<IRPodStateOutputData const> irPodStateOutputData() const;

    // "ENGINE_STATE".
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
