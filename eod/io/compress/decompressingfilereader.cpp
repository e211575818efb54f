#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/io/compress/compressionerror.h>
#include <eod/io/compress/decompressingfilereader.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/zlibcodecimpl.h>
#include <eod/recordsize.h>
#include <eod/serializableerror.h>

#include <boost/pointer_cast.hpp>

#include <algorithm>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/containerformat.h"
#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace codec = ::tq::eod::detail;
using namespace detail;

struct DecompressingFileReader::Stream {
    std::string codec;
    std::unique_ptr<SerializableCompressorDecoder> decoder;
};

DecompressingFileReader::DecompressingFileReader() = default;

DecompressingFileReader::~DecompressingFileReader() = default;

void DecompressingFileReader::damaged(std::uint64_t offset, const std::string& reason) const {
    throw CompressionError("DecompressingFileReader: " + _path + ": offset " +
                           std::to_string(offset) + ": " + reason);
}

void DecompressingFileReader::open(const std::wstring& path) { open(detail::narrowPath(path)); }

void DecompressingFileReader::open(const std::string& path) {
    EOD_REQUIRE(!isOpen(), "file already open");
    _file.open(path, std::ios::binary);
    if (!_file.is_open()) {
        throw CompressionError("DecompressingFileReader::open - could not open file " + path);
    }
    _path = path;
    _file.seekg(0, std::ios::end);
    _size = static_cast<std::uint64_t>(_file.tellg());
    _offset = 0;
    _ordinal = 0;
    _streams.clear();
    _pending_images.clear();
    _ready.clear();
    _in_segment = _torn_tail = _ended = _index_loaded = _has_index = false;
    try {
        std::uint64_t at = 0;
        if (!readItem(at) || _payload[0] != ITEM_HEADER) damaged(0, "not a compressed recording");
        PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
        if (!c.bytes(CONTAINER_MAGIC, sizeof CONTAINER_MAGIC)) {
            damaged(0, "not a compressed recording");
        }
        const unsigned char version = c.u8();
        if (c.ok() && version != CONTAINER_VERSION) {
            damaged(0, "unsupported container version " + std::to_string(version));
        }
        _profile_name = c.string();
        _record_codec = c.string();
        _keyframe_interval = c.u32();
        if (!c.ok() || c.remaining() != 0) damaged(0, "damaged header");
        if (!SerializableCompressorDecoderFactory::isRegistered(_record_codec)) {
            damaged(0, "unknown codec " + _record_codec);
        }
    } catch (...) {
        close();
        throw;
    }
    std::unique_ptr<Stream> records(new Stream);
    records->codec = _record_codec;
    _streams.push_back(std::move(records));
    _first_item = _offset;
    _torn_tail = false;
    _ended = false;
}

void DecompressingFileReader::close() {
    if (_file.is_open()) _file.close();
    _file.clear();
    _streams.clear();
    _pending_images.clear();
    _key_offsets.clear();
    _key_ordinals.clear();
}

void DecompressingFileReader::readAt(std::uint64_t offset, unsigned char* data,
                                     std::size_t length) {
    _file.clear();
    _file.seekg(static_cast<std::streamoff>(offset));
    _file.read(reinterpret_cast<char*>(data), static_cast<std::streamsize>(length));
    if (static_cast<std::size_t>(_file.gcount()) != length) {
        _ended = true;
        damaged(offset, "read failed");
    }
}

bool DecompressingFileReader::readItem(std::uint64_t& item_offset) {
    if (_ended) return false;
    item_offset = _offset;
    // Without a sound header the items after this one cannot be found: reading ends here.
    const auto broken = [this](const std::string& reason) {
        _ended = true;
        damaged(_offset, reason);
    };
    const std::uint64_t remaining = _size - std::min(_offset, _size);
    if (remaining == 0) {
        _ended = true;
        return false;
    }
    unsigned char header[7];
    const std::size_t got = static_cast<std::size_t>(std::min<std::uint64_t>(sizeof header, remaining));
    if (got < Serializable::minHeaderBytes()) {
        _ended = _torn_tail = true;
        return false;
    }
    readAt(_offset, header, got);
    if (static_cast<char>(header[0]) != CompressedSerializable::THIS_OBJECT_ID) {
        broken("not a compressed item (object id " +
                             std::to_string(static_cast<int>(static_cast<char>(header[0]))) + ")");
    }
    const RecordSize size = recordSizeFromPrefix(header, got);
    if (!size.known) {
        _ended = _torn_tail = true;
        return false;
    }
    const std::size_t header_bytes = size.header_bytes;
    const std::uint64_t data_size = size.total_bytes - header_bytes;
    if (data_size > remaining - header_bytes) {
        _ended = _torn_tail = true;
        return false;
    }
    if (data_size < 5) broken("item too short");
    if (data_size - 4 > MAX_ITEM_PAYLOAD) broken("item longer than the container allows");
    unsigned char length[4];
    readAt(_offset + header_bytes, length, 4);
    if (codec::loadU32(length) != data_size - 4) broken("item length does not match");
    // Sized only after the file showed that it holds this many bytes.
    _payload.resize(static_cast<std::size_t>(data_size - 4));
    readAt(_offset + header_bytes + 4, _payload.data(), _payload.size());
    _offset += header_bytes + data_size;
    return true;
}

boost::shared_ptr<EngineOutputData> DecompressingFileReader::readFrame() {
    EOD_REQUIRE(isOpen(), "no file is open");
    for (;;) {
        if (!_ready.empty()) {
            boost::shared_ptr<EngineOutputData> frame = _ready.front();
            _ready.pop_front();
            return frame;
        }
        std::uint64_t at = 0;
        if (!readItem(at)) return boost::shared_ptr<EngineOutputData>();
        try {
            switch (_payload[0]) {
                case ITEM_KEY_POINT:
                    handleKeyPoint(at, false);
                    break;
                case ITEM_STREAM:
                    handleStream(at);
                    break;
                case ITEM_DATA:
                    handleData(at);
                    break;
                case ITEM_INDEX:
                    _ended = true;
                    return boost::shared_ptr<EngineOutputData>();
                default:
                    damaged(at, "unknown item kind");
            }
        } catch (const CompressionError&) {
            // What was decoded since the last key point is in doubt: go on at the next one.
            _in_segment = false;
            _pending_images.clear();
            _ready.clear();
            throw;
        }
    }
}

void DecompressingFileReader::handleKeyPoint(std::uint64_t offset, bool sought) {
    PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
    c.u32();
    const std::uint32_t first = c.u32();
    c.u32();
    if (!c.ok() || c.remaining() != 0) damaged(offset, "damaged key point");
    // In step, a key point starts at the next frame; after an error it may lie further on.
    if ((_in_segment || sought) ? first != _ordinal : first < _ordinal) {
        damaged(offset, "key point of frame " + std::to_string(first) + " where frame " +
                            std::to_string(_ordinal) + " was expected");
    }
    _ordinal = first;
    for (auto& stream : _streams) stream->decoder.reset();
    _pending_images.clear();
    _ready.clear();
    _in_segment = true;
}

void DecompressingFileReader::handleStream(std::uint64_t offset) {
    PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
    const std::uint32_t id = c.u32();
    const std::string name = c.string();
    c.string();
    c.u8();
    c.u8();
    if (!c.ok() || c.remaining() != 0) damaged(offset, "damaged stream declaration");
    if (id == RECORD_STREAM_ID || id > _streams.size() || id >= MAX_STREAMS) {
        damaged(offset, "stream id " + std::to_string(id) + " out of order");
    }
    if (!SerializableCompressorDecoderFactory::isRegistered(name)) {
        damaged(offset, "unknown codec " + name);
    }
    if (id < _streams.size()) {
        if (_streams[id]->codec != name) damaged(offset, "stream " + std::to_string(id) +
                                                             " declared again with another codec");
        return;
    }
    std::unique_ptr<Stream> stream(new Stream);
    stream->codec = name;
    _streams.push_back(std::move(stream));
}

void DecompressingFileReader::handleData(std::uint64_t offset) {
    if (!_in_segment) return;
    PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
    const std::uint32_t id = c.u32();
    const std::uint32_t first = c.u32();
    const std::uint32_t count = c.u32();
    const std::uint32_t crc = c.u32();
    if (!c.ok()) damaged(offset, "damaged data item");
    if (id >= _streams.size()) damaged(offset, "undeclared stream " + std::to_string(id));
    const bool records = id == RECORD_STREAM_ID;
    // Images come before the records of their group, at most a group ahead.
    if (records ? first != _ordinal || count < 1 || count > MAX_GROUP_FRAMES
                : count != 1 || first < _ordinal || first - _ordinal >= MAX_GROUP_FRAMES) {
        damaged(offset, "data of frame " + std::to_string(first) + " where frame " +
                            std::to_string(_ordinal) + " was expected");
    }
    if (ZLibCodecImpl::crc(c.position(), c.remaining()) != crc) damaged(offset, "CRC mismatch");
    Stream& stream = *_streams[id];
    if (!stream.decoder) stream.decoder = SerializableCompressorDecoderFactory::create(stream.codec);
    try {
        stream.decoder->decode(c.position(), static_cast<unsigned int>(c.remaining()));
    } catch (const SerializableError& e) {
        damaged(offset, e.what());
    }
    std::vector<DecoderData> items;
    for (;;) {
        unsigned int status = 0;
        DecoderData item = stream.decoder->getNextWithStatus(status);
        if (status & Serializable::STATUS_NOT_ENOUGH_DATA) break;
        if (!item.record || item.tag != first + items.size() || items.size() == count) {
            damaged(offset, "stream item out of step");
        }
        items.push_back(item);
    }
    if (items.size() != count) damaged(offset, "data item holds fewer frames than it says");
    if (!records) {
        if (!_pending_images.emplace(std::make_pair(first, id), items[0].record).second) {
            damaged(offset, "two images of one stream in a frame");
        }
        return;
    }
    std::deque<boost::shared_ptr<EngineOutputData>> frames;
    for (std::uint32_t i = 0; i < count; ++i) {
        auto frame = boost::dynamic_pointer_cast<EngineOutputData>(items[i].record);
        if (!frame) damaged(offset, "record stream item is not a frame");
        restoreImages(offset, first + i, *frame);
        frames.push_back(frame);
    }
    if (!_pending_images.empty() && _pending_images.begin()->first.first < first + count) {
        damaged(offset, "image data that no frame names");
    }
    _ordinal = first + count;
    _ready.insert(_ready.end(), frames.begin(), frames.end());
}

void DecompressingFileReader::restoreImages(std::uint64_t offset, std::uint32_t ordinal,
                                            EngineOutputData& frame) {
    const auto mine = _pending_images.lower_bound(std::make_pair(ordinal, 0u));
    if (mine == _pending_images.end() || mine->first.first != ordinal) return;
    for (const auto& sub : frame.subObjects(ImageCollectionOutputData::THIS_OBJECT_ID)) {
        auto collection = boost::dynamic_pointer_cast<ImageCollectionOutputData>(sub);
        if (!collection) continue;
        for (const auto& t : collection->subObjects(CompressedSerializableToken::THIS_OBJECT_ID)) {
            auto token = boost::dynamic_pointer_cast<CompressedSerializableToken>(t);
            const auto it =
                token ? _pending_images.find(std::make_pair(
                            ordinal, static_cast<std::uint32_t>(token->streamID())))
                      : _pending_images.end();
            if (it == _pending_images.end()) {
                damaged(offset, "frame names an image stream without an image");
            }
            auto image = boost::dynamic_pointer_cast<ImageOutputData>(it->second);
            if (!image) damaged(offset, "image stream item is not an image");
            try {
                collection->addImage(image);
            } catch (const std::invalid_argument&) {
                damaged(offset, "image identifier twice in a collection");
            }
            collection->removeSubObject(*token);
            _pending_images.erase(it);
        }
    }
}

void DecompressingFileReader::loadIndex() {
    EOD_REQUIRE(isOpen(), "no file is open");
    if (_index_loaded) return;
    const std::uint64_t offset = _offset;
    const bool ended = _ended;
    const bool torn = _torn_tail;
    const auto restore = [&] {
        _offset = offset;
        _ended = ended;
        _torn_tail = torn;
    };
    _key_offsets.clear();
    _key_ordinals.clear();
    try {
        _has_index = loadTrailerIndex();
        if (!_has_index) walkKeyPoints();
    } catch (...) {
        // Frames can still be read in order from where reading stood.
        restore();
        throw;
    }
    restore();
    _index_loaded = true;
}

bool DecompressingFileReader::loadTrailerIndex() {
    if (_size < _first_item + TRAILER_BYTES) return false;
    unsigned char trailer[TRAILER_BYTES];
    readAt(_size - TRAILER_BYTES, trailer, TRAILER_BYTES);
    if (!std::equal(INDEX_MAGIC, INDEX_MAGIC + sizeof INDEX_MAGIC,
                    reinterpret_cast<const char*>(trailer + 8))) {
        return false;
    }
    const std::uint64_t at = codec::loadU64(trailer);
    if (at < _first_item || at >= _size - TRAILER_BYTES) damaged(_size - TRAILER_BYTES,
                                                                 "index offset out of range");
    _offset = at;
    _ended = false;
    std::uint64_t item = 0;
    if (!readItem(item) || _offset != _size || _payload[0] != ITEM_INDEX) {
        damaged(at, "index offset names no index");
    }
    PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
    const std::uint32_t n = c.u32();
    // The count must match the bytes present before anything is sized by it.
    if (!c.ok() || c.remaining() != std::uint64_t(n) * INDEX_ENTRY_BYTES + 4 + TRAILER_BYTES) {
        damaged(at, "damaged index");
    }
    for (std::uint32_t i = 0; i < n; ++i) {
        const std::uint32_t first = c.u32();
        c.u32();
        const std::uint64_t key = c.u64();
        const bool ordered = i == 0 ? first == 0 : first > _key_ordinals.back();
        if (!ordered || key < _first_item || key >= at ||
            (i > 0 && key <= _key_offsets.back())) {
            damaged(at, "index entry " + std::to_string(i) + " out of order");
        }
        _key_ordinals.push_back(first);
        _key_offsets.push_back(key);
    }
    _num_frames = c.u32();
    if (n > 0 ? _num_frames <= _key_ordinals.back() : _num_frames != 0) {
        damaged(at, "index frame count out of range");
    }
    if (c.u64() != at) damaged(at, "damaged index");
    return true;
}

void DecompressingFileReader::walkKeyPoints() {
    _offset = _first_item;
    _ended = false;
    _num_frames = 0;
    std::uint64_t at = 0;
    while (readItem(at)) {
        if (_payload[0] == ITEM_INDEX) break;
        PayloadCursor c(_payload.data() + 1, _payload.size() - 1);
        const std::uint32_t first_field = c.u32();
        if (_payload[0] == ITEM_KEY_POINT) {
            const std::uint32_t first = c.u32();
            if (!c.ok() || first != _num_frames) damaged(at, "key point out of order");
            _key_ordinals.push_back(first);
            _key_offsets.push_back(at);
        } else if (_payload[0] == ITEM_DATA && c.ok() && first_field == RECORD_STREAM_ID) {
            const std::uint32_t first = c.u32();
            const std::uint32_t count = c.u32();
            if (!c.ok() || first != _num_frames || count > MAX_GROUP_FRAMES) {
                damaged(at, "data item out of order");
            }
            _num_frames += count;
        }
    }
}

bool DecompressingFileReader::hasIndex() {
    loadIndex();
    return _has_index;
}

std::uint32_t DecompressingFileReader::numFrames() {
    loadIndex();
    return _num_frames;
}

void DecompressingFileReader::seekToFrame(std::uint32_t ordinal) {
    loadIndex();
    EOD_REQUIRE(ordinal < _num_frames, "frame ordinal out of range");
    const auto after = std::upper_bound(_key_ordinals.begin(), _key_ordinals.end(), ordinal);
    // A damaged file may count frames that no key point leads to.
    if (after == _key_ordinals.begin()) {
        damaged(_first_item, "no key point before frame " + std::to_string(ordinal));
    }
    const std::size_t k = static_cast<std::size_t>(after - _key_ordinals.begin()) - 1;
    _offset = _key_offsets[k];
    _ordinal = _key_ordinals[k];
    _ended = false;
    _in_segment = false;
    _pending_images.clear();
    std::uint64_t at = 0;
    if (!readItem(at) || _payload[0] != ITEM_KEY_POINT) {
        damaged(_key_offsets[k], "index names no key point");
    }
    handleKeyPoint(at, true);
    for (std::uint32_t skip = ordinal - _key_ordinals[k]; skip > 0; --skip) {
        if (!readFrame()) damaged(_offset, "frame " + std::to_string(ordinal) + " missing");
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
