#include <eod/compressedserializable.h>

#include <eod/serializableerror.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {


unsigned int CompressedSerializable::numDataBytes() const {
    return static_cast<unsigned int>(_payload.size()) + 4;
}

CompressedSerializable* CompressedSerializable::clone() const {
    return new CompressedSerializable(*this);
}

void CompressedSerializable::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _payload.size();
}

void CompressedSerializable::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << "PAYLOAD_BYTES";
}

void CompressedSerializable::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, static_cast<unsigned int>(_payload.size()));
    detail::appendRaw(buffer, _payload.data(), _payload.size());
}

void CompressedSerializable::readFromBuffer(const std::vector<unsigned char>& buffer,
                                            int& read_pos) {
    const unsigned int length = detail::readNumber<unsigned int>(buffer, read_pos);
    if (length > detail::bytesRemaining(buffer, read_pos)) {
        throw SerializableError("data_size in header exceeds amount of data in buffer");
    }
    const auto first = buffer.begin() + read_pos;
    _payload.assign(first, first + length);
    read_pos += static_cast<int>(length);
}

}  // namespace eod
}  // namespace tq
