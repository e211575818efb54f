#include "framereader.h"

#include <boost/pointer_cast.hpp>

#include <eod/io/compress/compressionerror.h>
#include <eod/serializable.h>
#include <eod/serializableerror.h>

namespace eodpy {

using tq::eod::EngineOutputData;
using tq::eod::SerializableError;

namespace {
// Compressed bytes handed to the decoder at a time.
const std::size_t kChunk = 256u << 10;
}  // namespace

bool FrameReader::isContainer(const std::string& path) {
    // The container reader checks the header item before anything else, so a file that
    // opens is a container whatever its later items hold.
    tq::eod::io::DecompressingFileReader probe;
    try {
        probe.open(path);
        return true;
    } catch (const tq::eod::io::CompressionError&) {
        return false;
    }
}

FrameReader::FrameReader(const std::string& path, const std::string& format) : _path(path) {
    if (format == "container") {
        _container.reset(new tq::eod::io::DecompressingFileReader());
        _container->open(path);
        return;
    }
    if (format == "zlib") {
        _zlib = true;
        _in.open(path, std::ios_base::in | std::ios_base::binary);
        if (!_in) throw SerializableError("Failed to open file '" + path + "'.");
        _decoder.reset(new tq::eod::io::ZLibDecoder());
        _chunk.resize(kChunk);
        return;
    }
    // A log cut short by a crash is reported after the other logs gave all their frames,
    // as `eod cat` does.
    _logs.setTornTailsLast(true);
    if (format == "logs") {
        _logs.openFiles(path);
    } else {
        _logs.openFile(path);
    }
}

boost::shared_ptr<EngineOutputData> FrameReader::next() {
    if (_container) return _container->readFrame();
    return _zlib ? nextFromStream() : _logs.readData();
}

boost::shared_ptr<EngineOutputData> FrameReader::nextFromStream() {
    const auto where = [&]() {
        return _path + ": corrupt stream in bytes " + std::to_string(_offset) + ".." +
               std::to_string(_offset + _chunk_bytes - 1) + ": ";
    };
    for (;;) {
        unsigned int status = 0;
        tq::eod::io::DecoderData item;
        try {
            item = _decoder->getNextWithStatus(status);
        } catch (const SerializableError& e) {
            throw SerializableError(where() + e.what());
        }
        // A record that fails its CRC resets the decoder without an exception.
        if (_decoder->numCrcMismatches() > 0) {
            throw SerializableError(where() + "a record fails its CRC check");
        }
        if (!(status & tq::eod::Serializable::STATUS_NOT_ENOUGH_DATA)) {
            if (auto frame = boost::dynamic_pointer_cast<EngineOutputData>(item.record)) {
                return frame;
            }
            continue;
        }
        if (_input_done) break;
        _offset += _chunk_bytes;
        _in.read(_chunk.data(), static_cast<std::streamsize>(_chunk.size()));
        _chunk_bytes = static_cast<std::uint64_t>(_in.gcount());
        if (_chunk_bytes == 0) {
            _input_done = true;
            break;
        }
        try {
            _decoder->decode(reinterpret_cast<const unsigned char*>(_chunk.data()),
                             static_cast<unsigned int>(_chunk_bytes));
        } catch (const SerializableError& e) {
            throw SerializableError(where() + e.what());
        }
    }
    if (_decoder->numPendingBytes() > 0) {
        throw SerializableError(_path + ": truncated: the stream ends at byte " +
                                std::to_string(_offset + _chunk_bytes) + " inside a record");
    }
    return nullptr;
}

}  // namespace eodpy
