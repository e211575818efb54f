#include "eod/io/detail/recordframes.h"

#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include <utility>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

RecordFrameParser::RecordFrameParser(std::string decoder_name, std::size_t kept_record_capacity)
    : _decoder_name(std::move(decoder_name)), _kept_record_capacity(kept_record_capacity) {}

RecordFrameParser::Parse RecordFrameParser::parse(std::uint32_t max_record_length,
                                                  std::string& record_error) {
    using ::tq::eod::detail::loadU32LE;
    Parse result = Parse::ok;
    std::size_t pos = 0;
    while (_pending.size() - pos >= FRAME_HEADER_BYTES) {
        const unsigned char* header = _pending.data() + pos;
        const std::uint32_t length = loadU32LE(header + 8);
        if (length > max_record_length) {
            result = Parse::too_long;
            break;
        }
        if (_pending.size() - pos - FRAME_HEADER_BYTES < length) break;
        const unsigned char* record = header + FRAME_HEADER_BYTES;
        if (ZLibCodecImpl::crc(record, length) != loadU32LE(header + 4)) {
            result = Parse::crc_mismatch;
            break;
        }
        DecoderData item;
        item.tag = loadU32LE(header);
        unsigned int status = 0;
        bool rebuilt = true;
        if (length > 0) {
            _record.assign(record, record + length);
            int read_pos = 0;
            try {
                item.record = SerializableFactory::newObject(_record, read_pos);
                if (static_cast<std::uint32_t>(read_pos) != length) {
                    throw SerializableError(_decoder_name +
                                            "::decode() - record does not fill its frame");
                }
                if (!item.record) status = Serializable::STATUS_UNKNOWN_OBJECT_ID;
            } catch (const SerializableError& e) {
                if (record_error.empty()) record_error = e.what();
                rebuilt = false;
            }
        }
        if (rebuilt) _queue.push(std::move(item), status);
        pos += FRAME_HEADER_BYTES + length;
    }
    _pending.erase(_pending.begin(), _pending.begin() + static_cast<std::ptrdiff_t>(pos));
    // Not held on to after an unusually long record.
    if (_record.capacity() > _kept_record_capacity) std::vector<unsigned char>().swap(_record);
    return result;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
