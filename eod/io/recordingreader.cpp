#include <eod/io/recordingreader.h>

#include <fstream>

#include <eod/compressedserializable.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/index/framerangereader.h>

namespace tq {
namespace eod {
namespace io {

RecordingReader::RecordingReader() = default;
RecordingReader::~RecordingReader() = default;

bool RecordingReader::isContainer(const std::string& path) {
    // A container starts with its header item: a record of id 95 (1-byte id, 2-byte size,
    // then the payload's 4-byte length) whose payload begins with the header kind and magic,
    // "HEODC".
    std::ifstream in(path, std::ios::binary);
    unsigned char head[12] = {};
    in.read(reinterpret_cast<char*>(head), sizeof head);
    return in.gcount() == sizeof head &&
           static_cast<char>(head[0]) == CompressedSerializable::THIS_OBJECT_ID &&
           std::string(reinterpret_cast<const char*>(head + 7), 5) == "HEODC";
}

void RecordingReader::setRange(unsigned int first, unsigned int last) {
    _first = first;
    _last = last;
}

void RecordingReader::open(const std::string& path) {
    if (isContainer(path)) {
        _container.reset(new DecompressingFileReader());
        _container->open(path);
        return;
    }
    _logs.reset(new FrameRangeReader());
    _logs->open(path);
    _logs->setTornTailsLast(true);
    _logs->setRange(_first, _last);
}

boost::shared_ptr<EngineOutputData> RecordingReader::readData() {
    if (_logs) return _logs->readData();
    if (!_container) return boost::shared_ptr<EngineOutputData>();
    while (const boost::shared_ptr<EngineOutputData> frame = _container->readFrame()) {
        if (frame->frameNum() >= _first && frame->frameNum() <= _last) return frame;
    }
    return boost::shared_ptr<EngineOutputData>();
}

bool RecordingReader::tornTail() const { return _container && _container->hasTornTail(); }

}  // namespace io
}  // namespace eod
}  // namespace tq
