#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/io/compress/compressingfilewriter.h>
#include <eod/io/compress/compressionerror.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <eod/io/zlibcodecimpl.h>
#include <eod/serializableerror.h>

#include <boost/pointer_cast.hpp>

#include <set>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/containerformat.h"
#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace codec = ::tq::eod::detail;
using namespace detail;

struct CompressingFileWriter::Stream {
    CodecSettings settings;
    unsigned int collection = 0;
    std::string identifier;
    std::unique_ptr<SerializableCompressorEncoder> encoder;
};

CompressingFileWriter::CompressingFileWriter() = default;

CompressingFileWriter::~CompressingFileWriter() {
    try {
        close();
    } catch (...) {
        // A destructor must not throw; close() reports the error to callers who ask.
    }
}

void CompressingFileWriter::open(const std::wstring& path, const CompressionProfile& profile) {
    open(detail::narrowPath(path), profile);
}

void CompressingFileWriter::open(const std::string& path, const CompressionProfile& profile) {
    EOD_REQUIRE(!isOpen(), "file already open");
    CompressionProfileRegistry::checkProfile(profile);
    // Settings out of range show now, not at the first frame.
    SerializableCompressorEncoderFactory::create(profile.recordCodec);

    _file.open(path, std::ios::binary | std::ios::trunc);
    if (!_file.is_open()) {
        throw CompressionError("CompressingFileWriter::open - could not open file " + path);
    }
    _path = path;
    _profile = profile;
    _streams.clear();
    _image_streams.clear();
    _index_offsets.clear();
    _index_frames.clear();
    _offset = 0;
    _ordinal = 0;
    _group_size = 0;
    _records.clear();
    _force_key_point = false;
    std::unique_ptr<Stream> records(new Stream);
    records->settings = profile.recordCodec;
    _streams.push_back(std::move(records));

    _out.clear();
    _payload.assign(1, ITEM_HEADER);
    _payload.insert(_payload.end(), CONTAINER_MAGIC, CONTAINER_MAGIC + sizeof CONTAINER_MAGIC);
    _payload.push_back(CONTAINER_VERSION);
    appendString(_payload, profile.name);
    appendString(_payload, profile.recordCodec.codec);
    codec::appendU32(_payload, profile.keyframeInterval);
    appendItem(_payload);
    writeOut();
}

void CompressingFileWriter::appendItem(const std::vector<unsigned char>& payload) {
    if (payload.size() > MAX_ITEM_PAYLOAD) {
        throw CompressionError("CompressingFileWriter - item larger than the container allows: " +
                               _path);
    }
    const unsigned int data_size = static_cast<unsigned int>(payload.size()) + 4;
    Serializable::writeHeader(_out, CompressedSerializable::THIS_OBJECT_ID, data_size);
    codec::appendU32(_out, static_cast<std::uint32_t>(payload.size()));
    _out.insert(_out.end(), payload.begin(), payload.end());
}

void CompressingFileWriter::appendData(std::uint32_t stream, std::uint32_t first,
                                       std::uint32_t count,
                                       const std::vector<unsigned char>& bytes) {
    _payload.assign(1, ITEM_DATA);
    codec::appendU32(_payload, stream);
    codec::appendU32(_payload, first);
    codec::appendU32(_payload, count);
    codec::appendU32(_payload, ZLibCodecImpl::crc(bytes.data(), bytes.size()));
    _payload.insert(_payload.end(), bytes.begin(), bytes.end());
    appendItem(_payload);
}

void CompressingFileWriter::declareStream(std::uint32_t id) {
    const Stream& s = *_streams[id];
    _payload.assign(1, ITEM_STREAM);
    codec::appendU32(_payload, id);
    appendString(_payload, s.settings.codec);
    appendString(_payload, s.identifier);
    codec::appendU16(_payload, static_cast<std::uint16_t>(s.collection));
    appendItem(_payload);
}

void CompressingFileWriter::startKeyPoint(const EngineOutputData& frame) {
    _index_offsets.push_back(_offset + _out.size());
    _index_frames.emplace_back(_ordinal, frame.frameNum());
    _payload.assign(1, ITEM_KEY_POINT);
    codec::appendU32(_payload, static_cast<std::uint32_t>(_index_offsets.size() - 1));
    codec::appendU32(_payload, _ordinal);
    codec::appendU32(_payload, frame.frameNum());
    appendItem(_payload);
    for (std::uint32_t id = 0; id < _streams.size(); ++id) {
        _streams[id]->encoder = SerializableCompressorEncoderFactory::create(_streams[id]->settings);
        if (id != RECORD_STREAM_ID) declareStream(id);
    }
    _force_key_point = false;
}

std::uint32_t CompressingFileWriter::imageStream(unsigned int collection,
                                                 const std::string& identifier, int format) {
    const auto key = std::make_pair(collection, identifier);
    const auto it = _image_streams.find(key);
    if (it != _image_streams.end()) return it->second;
    if (_streams.size() >= MAX_STREAMS) {
        throw CompressionError("CompressingFileWriter - too many image streams: " + _path);
    }
    std::unique_ptr<Stream> s(new Stream);
    s->settings = _profile.imageCodecFor(format);
    s->collection = collection;
    s->identifier = identifier;
    s->encoder = SerializableCompressorEncoderFactory::create(s->settings);
    const std::uint32_t id = static_cast<std::uint32_t>(_streams.size());
    _streams.push_back(std::move(s));
    _image_streams[key] = id;
    declareStream(id);
    return id;
}

namespace {

// Whether the images of this collection can travel in streams: tokens must be told apart
// from the collection's own sub-records, fit beside them, and name distinct identifiers.
bool canTokenise(const ImageCollectionOutputData& c) {
    if (c.hasSubObjectID(CompressedSerializableToken::THIS_OBJECT_ID)) return false;
    if (c.numSubObjects() + static_cast<unsigned int>(c.numImages()) > 255) return false;
    std::set<std::string> identifiers;
    for (unsigned int i = 0; i < c.numImages(); ++i) {
        if (!identifiers.insert(c.image(i)->imageIdentifier()).second) return false;
    }
    return true;
}

}  // namespace

boost::shared_ptr<EngineOutputData> CompressingFileWriter::splitImages(
    const EngineOutputData& frame,
    std::vector<std::pair<std::uint32_t, boost::shared_ptr<const Serializable>>>& images) {
    const SerializableComposite::ConstSubObjects subs = frame.subObjects();
    std::vector<boost::shared_ptr<const ImageCollectionOutputData>> collections;
    bool tokens_everywhere = true;
    for (const auto& sub : subs) {
        if (sub->objectID() != ImageCollectionOutputData::THIS_OBJECT_ID) continue;
        auto c = boost::dynamic_pointer_cast<const ImageCollectionOutputData>(sub);
        if (!c) continue;
        collections.push_back(c);
        // A frame keeps all its images inline when one collection cannot hand them over,
        // so that a reader restores tokens exactly when the frame has image data.
        if (c->serializeEnabled() && !canTokenise(*c)) tokens_everywhere = false;
    }
    boost::shared_ptr<EngineOutputData> shell(new EngineOutputData);
    shell->setFrameNum(frame.frameNum());
    unsigned int collection = 0;
    for (const auto& sub : subs) {
        boost::shared_ptr<Serializable> keep = boost::const_pointer_cast<Serializable>(sub);
        auto c = boost::dynamic_pointer_cast<const ImageCollectionOutputData>(sub);
        if (c && sub->objectID() == ImageCollectionOutputData::THIS_OBJECT_ID) {
            const unsigned int index = collection++;
            if (tokens_everywhere && c->serializeEnabled() && c->numImages() > 0) {
                boost::shared_ptr<ImageCollectionOutputData> stand_in(
                    new ImageCollectionOutputData);
                for (const auto& own : c->subObjects()) {
                    stand_in->addSubObject(boost::const_pointer_cast<Serializable>(own));
                }
                for (unsigned int i = 0; i < c->numImages(); ++i) {
                    boost::shared_ptr<const ImageOutputData> image = c->image(i);
                    const std::uint32_t id =
                        imageStream(index, image->imageIdentifier(), image->imageFormat());
                    stand_in->addSubObject(boost::shared_ptr<Serializable>(
                        new CompressedSerializableToken(static_cast<int>(id))));
                    images.emplace_back(id, image);
                }
                keep = stand_in;
            }
        }
        shell->addSubObject(keep);
    }
    return shell;
}

void CompressingFileWriter::writeFrame(const EngineOutputData& frame) {
    EOD_REQUIRE(isOpen(), "no file is open");
    if (!frame.serializeEnabled()) {
        throw SerializableError("Serializable::serialize() - trying to serialize invalid object.");
    }
    const bool key_point = _force_key_point || _ordinal % _profile.keyframeInterval == 0;
    // A key point starts a new group, so that a reader can begin decoding at it.
    if (key_point) endGroup();
    const std::size_t before = _out.size();
    try {
        if (key_point) startKeyPoint(frame);
        std::vector<std::pair<std::uint32_t, boost::shared_ptr<const Serializable>>> images;
        const boost::shared_ptr<EngineOutputData> shell = splitImages(frame, images);
        for (const auto& image : images) {
            _chunk.clear();
            SerializableCompressorEncoder& encoder = *_streams[image.first]->encoder;
            encoder.encode(*image.second, _ordinal, _chunk);
            encoder.flush(_chunk);
            appendData(image.first, _ordinal, 1, _chunk);
        }
        _streams[RECORD_STREAM_ID]->encoder->encode(*shell, _ordinal, _records);
    } catch (...) {
        // The image encoders may have taken part of the frame: the next frame starts them
        // afresh at a key point, after the frames of the group before this one.
        _out.resize(before);
        if (key_point && !_index_offsets.empty()) {
            _index_offsets.pop_back();
            _index_frames.pop_back();
        }
        _force_key_point = true;
        throw;
    }
    if (_group_size == 0) _group_first = _ordinal;
    ++_group_size;
    ++_ordinal;
    if (_group_size >= _profile.framesPerGroup) endGroup();
}

void CompressingFileWriter::endGroup() {
    if (_group_size == 0) return;
    SerializableCompressorEncoder& records = *_streams[RECORD_STREAM_ID]->encoder;
    records.flush(_records);
    appendData(RECORD_STREAM_ID, _group_first, _group_size, _records);
    _records.clear();
    _group_size = 0;
    writeOut();
}

void CompressingFileWriter::writeOut() {
    _file.write(reinterpret_cast<const char*>(_out.data()),
                static_cast<std::streamsize>(_out.size()));
    if (!_file) throw CompressionError("CompressingFileWriter - failed to write " + _path);
    _offset += _out.size();
    _out.clear();
}

void CompressingFileWriter::flush() {
    EOD_REQUIRE(isOpen(), "no file is open");
    endGroup();
    _file.flush();
    if (!_file) throw CompressionError("CompressingFileWriter - failed to write " + _path);
}

void CompressingFileWriter::close() {
    if (!isOpen()) return;
    try {
        endGroup();
    } catch (...) {
        _file.close();
        throw;
    }
    _payload.assign(1, ITEM_INDEX);
    codec::appendU32(_payload, static_cast<std::uint32_t>(_index_offsets.size()));
    for (std::size_t i = 0; i < _index_offsets.size(); ++i) {
        codec::appendU32(_payload, _index_frames[i].first);
        codec::appendU32(_payload, _index_frames[i].second);
        codec::appendU64(_payload, _index_offsets[i]);
    }
    codec::appendU32(_payload, _ordinal);
    codec::appendU64(_payload, _offset);
    _payload.insert(_payload.end(), INDEX_MAGIC, INDEX_MAGIC + sizeof INDEX_MAGIC);
    appendItem(_payload);
    try {
        writeOut();
        _file.close();
        if (_file.fail()) throw CompressionError("CompressingFileWriter - failed to write " + _path);
    } catch (...) {
        if (_file.is_open()) _file.close();
        throw;
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
