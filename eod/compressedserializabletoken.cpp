#include <eod/compressedserializabletoken.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"

namespace tq {
namespace eod {


CompressedSerializableToken* CompressedSerializableToken::clone() const {
    return new CompressedSerializableToken(*this);
}

void CompressedSerializableToken::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "STREAM_ID";
}

void CompressedSerializableToken::printOwnData(std::ostream& os) const {
    detail::Columns(os) << _stream_id;
}

void CompressedSerializableToken::appendEngineSpecificData(
    std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, _stream_id);
}

void CompressedSerializableToken::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                         int& read_pos) {
    _stream_id = detail::readNumber<int>(buffer, read_pos);
}

}  // namespace eod
}  // namespace tq
