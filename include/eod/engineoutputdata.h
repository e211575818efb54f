#ifndef EOD_ENGINEOUTPUTDATA_H
#define EOD_ENGINEOUTPUTDATA_H

// One processed camera frame: a numbered envelope whose sub-records are everything the
// engine produced for the frame. Encoding: record header (id 9), flag byte, 4-byte frame
// number, sub-object count, sub-records in ascending object id order.

#include <string>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class WorldOutputDataV2;

class EngineOutputData : public EngineOutputBase {
public:
    static const char THIS_OBJECT_ID = 9;
    static const char ENGINE_OUTPUT_DATA_ID = 9;

    EngineOutputData() = default;
    EngineOutputData(const EngineOutputData&) = default;
    EngineOutputData& operator=(const EngineOutputData&) = default;
    ~EngineOutputData() override;

    char objectID() const override { return THIS_OBJECT_ID; }
    EngineOutputData* clone() const override;
    // Several frames may sit side by side in one parent.
    bool forbidDuplicateSiblings() const override { return false; }

    unsigned int frameNum() const { return _frame_num; }
    void setFrameNum(unsigned int frame_num) { _frame_num = frame_num; }

    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

    // Extensions of the per-object log files: ".tql" and ".itql".
    static const std::wstring& LOGFILE_EXTENSION();
    static const std::wstring& LOGFILE_INDEX_EXTENSION();

    // The frame's world record; null when it has none.
    boost::shared_ptr<WorldOutputDataV2> worldOutputData();
    boost::shared_ptr<WorldOutputDataV2 const> worldOutputData() const;

protected:
    // Removes every sub-record, sets the frame number to 0 and enables serialisation.
    void reset();

    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override { return 4; }

private:
    unsigned int _frame_num = 0;
};

// The frame's world record; null when it has none.
boost::shared_ptr<WorldOutputDataV2> worldOutputData(EngineOutputData& frame);
// The frame's world record, added as a new empty one when the frame has none.
boost::shared_ptr<WorldOutputDataV2> addWorldOutputDataIfMissing(EngineOutputData& frame);

}  // namespace eod
}  // namespace tq

#endif
