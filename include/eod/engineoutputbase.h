#ifndef EOD_ENGINEOUTPUTBASE_H
#define EOD_ENGINEOUTPUTBASE_H

// Data bytes of every engine output record: the serialise-enabled flag (one byte, 0 or 1),
// the record's engine-specific fields, then the composite's sub-object count and
// sub-records. A record whose flag is 0 stays in memory but is left out of its parent's
// encoding.

#include <string>
#include <vector>

#include <eod/serializablecomposite.h>

namespace tq {
namespace eod {

// Every per-eye pair in a record is indexed by it, right eye first.
enum EyeId { RIGHT_EYE = 0, LEFT_EYE = 1, BOTH_EYES = 2 };

const unsigned int ARRAY_SIZE_2D_DATA = 2;
const unsigned int ARRAY_SIZE_3D_DATA = 3;
const unsigned int ARRAY_SIZE_4D_DATA = 4;
const unsigned int ARRAY_SIZE_PAIR_DATA = 2;

class EngineOutputBase : public SerializableComposite {
public:
    EngineOutputBase() = default;
    EngineOutputBase(const EngineOutputBase&) = default;
    EngineOutputBase& operator=(const EngineOutputBase&) = default;
    ~EngineOutputBase() override;

    bool serializeEnabled() const override { return _serialize_enabled != 0; }
    void setSerializeEnabled(bool enabled) { _serialize_enabled = enabled ? 1 : 0; }

    unsigned int numOwnDataBytes() const override { return numEngineSpecificDataBytes() + 1; }

    // "RIGHT EYE", "LEFT EYE" or "BOTH EYES"; any other id is a usage error.
    static const std::string& eyeIdName(EyeId id);

protected:
    void appendOwnData(std::vector<unsigned char>& buffer) const override;
    void readOwnData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    // Accepts EngineOutputBase records only.
    void doAddSubObject(const boost::shared_ptr<Serializable>& object) override;

    // The record's own fields; the defaults describe a record with none.
    virtual void appendEngineSpecificData(std::vector<unsigned char>&) const {}
    virtual void readEngineSpecificData(const std::vector<unsigned char>&, int&) {}
    virtual unsigned int numEngineSpecificDataBytes() const { return 0; }

private:
    // Kept as read: any non-zero value counts as enabled.
    char _serialize_enabled = 1;
};

}  // namespace eod
}  // namespace tq

#endif
