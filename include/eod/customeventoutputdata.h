#ifndef EOD_CUSTOMEVENTOUTPUTDATA_H
#define EOD_CUSTOMEVENTOUTPUTDATA_H

// A word of 32 user-defined event flags, one bit per event. Engine-specific data (4 bytes):
// the flags (unsigned int).

#include <vector>

#include <eod/engineoutputbase.h>

namespace tq {
namespace eod {

class CustomEventOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 36;
    static constexpr int NUM_FLAGS = 32;

    CustomEventOutputData() = default;
    CustomEventOutputData(const CustomEventOutputData&) = default;
    CustomEventOutputData& operator=(const CustomEventOutputData&) = default;
    ~CustomEventOutputData() override;
    void copyFrom(const CustomEventOutputData& other) { *this = other; }

    char objectID() const override { return THIS_OBJECT_ID; }
    CustomEventOutputData* clone() const override;

    unsigned int flags() const { return _flags; }
    // flags = (flags AND keep_mask) OR values.
    void setFlags(unsigned int values, unsigned int keep_mask);
    // Sets or clears one bit and keeps the others. Bits are numbered 0..31; a number outside
    // that range names no flag: setFlag leaves the flags as they are and isSet is false.
    void setFlag(int bit, bool on);
    bool isSet(int bit) const;

    // 32 columns "BIT0" .. "BIT31", each 0 or 1, bit 0 first.
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    template <class Self, class V>
    static void visitFields(Self& self, V& v);

    unsigned int _flags = 0;
};

}  // namespace eod
}  // namespace tq

#endif
