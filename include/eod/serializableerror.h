#ifndef EOD_SERIALIZABLEERROR_H
#define EOD_SERIALIZABLEERROR_H

#include <eod/eoderror.h>

namespace tq {
namespace eod {

// Malformed data or misuse of the serialisation core, and raw record file failures.
class SerializableError : public EODError {
public:
    explicit SerializableError(const std::string& message);
    const char* className() const override;
};

}  // namespace eod
}  // namespace tq

#endif
