#include <eod/recordsize.h>

#include <eod/serializable.h>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {

RecordSize recordSizeFromPrefix(const unsigned char* prefix, std::size_t available) {
    RecordSize size;
    size.header_bytes = Serializable::minHeaderBytes();
    if (available < size.header_bytes) return size;
    std::uint64_t data_size = detail::loadU16(prefix + 1);
    if (data_size == Serializable::extendedHeaderSizeMagicCookie()) {
        size.header_bytes += 4;
        if (available < size.header_bytes) return size;
        data_size = detail::loadU32(prefix + 3);
    }
    size.known = true;
    size.total_bytes = size.header_bytes + data_size;
    return size;
}

}  // namespace eod
}  // namespace tq
