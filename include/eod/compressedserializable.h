#ifndef EOD_COMPRESSEDSERIALIZABLE_H
#define EOD_COMPRESSEDSERIALIZABLE_H

// An opaque compressed payload. Data bytes: payload length (4 bytes), then the payload.

#include <vector>

#include <eod/serializable.h>

namespace tq {
namespace eod {

class CompressedSerializable : public Serializable {
public:
    static constexpr char THIS_OBJECT_ID = 95;

    CompressedSerializable() = default;
    explicit CompressedSerializable(std::vector<unsigned char> payload)
        : _payload(std::move(payload)) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    unsigned int numDataBytes() const override;
    CompressedSerializable* clone() const override;
    // One column, "PAYLOAD_BYTES": the payload's length (the bytes themselves are opaque).
    void printLine(std::ostream& os) const override;
    void printHeader(std::ostream& os) const override;

    const std::vector<unsigned char>& payload() const { return _payload; }
    void setPayload(std::vector<unsigned char> payload) { _payload = std::move(payload); }
    std::vector<unsigned char>::const_iterator begin() const { return _payload.begin(); }
    std::vector<unsigned char>::const_iterator end() const { return _payload.end(); }

protected:
    void appendBuffer(std::vector<unsigned char>& buffer) const override;
    // The length is checked against the bytes present before anything is allocated.
    void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) override;

private:
    std::vector<unsigned char> _payload;
};

}  // namespace eod
}  // namespace tq

#endif
