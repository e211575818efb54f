#include "eod/detail/bytecodec.h"

#include <algorithm>
#include <climits>

#include <eod/serializableerror.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace detail {

void rejectReadPos(int read_pos) {
    EOD_REQUIRE(read_pos >= 0, "read_pos is negative");
    throw SerializableError("Serializable::checkReadPos() - Attempt to read past end of buffer.");
}

std::string readString(const Bytes& buffer, int& read_pos) {
    EOD_REQUIRE(read_pos >= 0, "read_pos is negative");
    const std::size_t start = static_cast<std::size_t>(read_pos);
    // Searched in the readable bytes only, so the position after the terminator stays an int.
    const std::size_t readable = readableSize(buffer);
    const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(readable);
    const auto begin = buffer.begin() + static_cast<std::ptrdiff_t>(std::min(start, readable));
    const auto terminator = std::find(begin, end, 0);
    if (terminator == end) {
        throw SerializableError("Serializable::readBuffer() - Missing terminator for string.");
    }
    std::string s(begin, terminator);
    read_pos = static_cast<int>(terminator - buffer.begin()) + 1;
    return s;
}

void readRaw(const Bytes& buffer, int& read_pos, void* dest, std::size_t n) {
    if (n == 0) {
        EOD_REQUIRE(read_pos >= 0, "read_pos is negative");
        return;
    }
    if (n > static_cast<std::size_t>(INT_MAX)) {
        throw SerializableError("Serializable::checkReadPos() - Attempt to read past end of buffer.");
    }
    checkReadPos(buffer, read_pos, static_cast<int>(n));
    std::memcpy(dest, buffer.data() + read_pos, n);
    read_pos += static_cast<int>(n);
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
