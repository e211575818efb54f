#ifndef EOD_COMPRESSEDSERIALIZABLETOKEN_H
#define EOD_COMPRESSEDSERIALIZABLETOKEN_H

// Stands in a frame for a sub-record whose bytes travel compressed in a separate stream.
// Engine-specific data: the stream id (4 bytes).

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class CompressedSerializableToken : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 96;
    static constexpr int INVALID_STREAM_ID = -1;

    CompressedSerializableToken() = default;
    explicit CompressedSerializableToken(int stream_id) : _stream_id(stream_id) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    CompressedSerializableToken* clone() const override;
    // A parent may hold several tokens.
    bool forbidDuplicateSiblings() const override { return false; }

    int streamID() const { return _stream_id; }
    void setStreamID(int stream_id) { _stream_id = stream_id; }

    // One column, "STREAM_ID".
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override { return 4; }

private:
    int _stream_id = INVALID_STREAM_ID;
};

}  // namespace eod
}  // namespace tq

#endif
