#include <eod/engineoutputbase.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

EngineOutputBase::~EngineOutputBase() = default;

const std::string& EngineOutputBase::eyeIdName(EyeId id) {
    static const std::string names[] = {"RIGHT EYE", "LEFT EYE", "BOTH EYES"};
    EOD_REQUIRE(id == RIGHT_EYE || id == LEFT_EYE || id == BOTH_EYES,
                "eye_id should be either LEFT_EYE, RIGHT_EYE or BOTH_EYES");
    return names[id];
}

void EngineOutputBase::appendOwnData(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, _serialize_enabled);
    appendEngineSpecificData(buffer);
}

void EngineOutputBase::readOwnData(const std::vector<unsigned char>& buffer, int& read_pos) {
    _serialize_enabled = detail::readNumber<char>(buffer, read_pos);
    readEngineSpecificData(buffer, read_pos);
}

void EngineOutputBase::doAddSubObject(const boost::shared_ptr<Serializable>& object) {
    // A plain pointer cast: no reference count is touched for the test.
    if (object && !dynamic_cast<const EngineOutputBase*>(object.get())) {
        throw SerializableError(
            "EngineOutputBase::addSubObject - object not derived from EngineOutputBase");
    }
    insertSubObject(object);
}

}  // namespace eod
}  // namespace tq
