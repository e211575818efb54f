#include <eod/io/index/logscan.h>

#include <boost/pointer_cast.hpp>

#include <eod/engineoutputdata.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/serializablefactory.h>

#include "eod/io/index/detail/indexformat.h"

namespace tq {
namespace eod {
namespace io {

LogScanner::LogScanner(const std::string& log_path, std::uint64_t from)
    : _path(log_path), _in(log_path, std::ios_base::in | std::ios_base::binary) {
    if (_in) {
        _in.seekg(0, std::ios_base::end);
        const std::streamoff end = _in.tellg();
        if (end >= 0) _size = static_cast<std::uint64_t>(end);
    }
    if (!_in) throw EngineOutputDataFileError("LogScanner - could not open file " + log_path);
    _pos = std::min(from, _size);
}

bool LogScanner::next(LogIndexEntry& entry, std::vector<unsigned char>& bytes) {
    while (_pos < _size) {
        const std::uint64_t offset = _pos;
        detail::RecordHead head;
        if (!detail::readRecordHead(_in, offset, head) || head.end > _size) {
            _damage.push_back({LogDamage::TORN_TAIL, offset, _size - offset, head.frame_known,
                               head.frame_num});
            _pos = _size;
            return false;
        }
        _pos = head.end;
        // Within the file, so at most the file's size is allocated.
        bytes.resize(static_cast<std::size_t>(head.end - offset));
        _in.clear();
        _in.seekg(static_cast<std::streamoff>(offset));
        _in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        bool good = static_cast<bool>(_in);
        if (good) {
            int read_pos = 0;
            unsigned int status = 0;
            const boost::shared_ptr<EngineOutputData> frame =
                boost::dynamic_pointer_cast<EngineOutputData>(
                    SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
            good = frame && static_cast<std::size_t>(read_pos) == bytes.size();
            if (good) {
                entry.frame_num = frame->frameNum();
                entry.offset = offset;
                return true;
            }
        }
        _damage.push_back({LogDamage::CORRUPT_RECORD, offset, head.end - offset, head.frame_known,
                           head.frame_num});
    }
    return false;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
