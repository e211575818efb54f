#include <eod/serializableerror.h>

namespace tq {
namespace eod {

SerializableError::SerializableError(const std::string& message) : EODError(message) {}

const char* SerializableError::className() const { return "SerializableError"; }

}  // namespace eod
}  // namespace tq
