// Writes the seed corpora of the fuzz targets from real encodings:
//
//     make_corpus <fuzz/corpus>
//
// For each target a directory of small files: a typical frame with sub-records, a default
// record of every registered class, records back to back, and a few truncations. Rerun it
// and commit the result when a record's encoding changes or a record class is added.

#include <eod/eod.h>
#include <eod/io/compress/compressingfilewriter.h>
#include <eod/io/compress/compressionprofileregistry.h>
#include <eod/io/compress/serializablecompressorfactory.h>
#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <boost/make_shared.hpp>
#include <algorithm>
#include <iterator>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "eod/detail/bytecodec.h"
#include "fuzz/fuzzing.h"

using namespace tq::eod;
using eodfuzz::Bytes;

namespace {

void writeSeed(const std::string& dir, const std::string& name, const Bytes& bytes) {
    ::mkdir(dir.c_str(), 0755);
    std::ofstream out(dir + "/" + name, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        std::cerr << "cannot write " << dir << "/" << name << '\n';
        std::exit(1);
    }
}

Bytes concat(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes prefix(const Bytes& bytes, std::size_t n) { return Bytes(bytes.begin(), bytes.begin() + n); }

boost::shared_ptr<ImageOutputData> smallImage(const std::string& identifier) {
    const unsigned char pixels[8] = {0, 40, 80, 120, 160, 200, 240, 255};
    auto image = boost::make_shared<ImageOutputData>();
    image->setNewImage(4, 2, 4, pixels, 1);
    image->setImageIdentifier(identifier);
    return image;
}

FaceLandmark landmark(int id, float x) {
    FaceLandmark l;
    l.id = id;
    l.coordinate = FaceCoordinate{x, x + 1.0f, x + 2.0f};
    l.texture_coordinate = FaceTextureCoordinate{x / 10.0f, x / 20.0f};
    return l;
}

boost::shared_ptr<FaceSetOutputData> faceSet() {
    auto texture = boost::make_shared<FaceTextureOutputData>();
    texture->addFaceTexture(static_cast<FaceTextureOutputData::FaceTextureType>(0),
                            smallImage("texture"));
    texture->setPixelTransform(1.0f, 0.0f, 0.0f, 1.0f);
    texture->addMaskLandmark(landmark(800, 3.0f));

    auto face = boost::make_shared<FaceOutputDataV2>();
    face->addLandmark(landmark(0, 1.0f));
    face->addLandmark(landmark(1, 2.0f));
    face->setWearingGlasses(WEARING_GLASSES);
    face->addFaceTexture(texture);

    auto set = boost::make_shared<FaceSetOutputData>();
    set->addSubObject(face);
    return set;
}

boost::shared_ptr<EyeOutputData> eyes() {
    auto gaze = boost::make_shared<GazeOutputData>();
    gaze->setGazeCalibrated(true);
    gaze->setGazeRotationPitchYaw(RIGHT_EYE, {0.1f, -0.2f});
    auto pupils = boost::make_shared<PupilOutputData>();
    pupils->setPupilDiameter(LEFT_EYE, 0.004f);
    auto closure = boost::make_shared<EyeClosureOutputData>();
    closure->setPerclos(0.25f);
    auto eye = boost::make_shared<EyeOutputData>();
    eye->addSubObject(gaze);
    eye->addSubObject(pupils);
    eye->addSubObject(closure);
    return eye;
}

boost::shared_ptr<WorldOutputDataV2> world() {
    auto world = boost::make_shared<WorldOutputDataV2>();
    world->addSubObject(boost::make_shared<GazeIntersectionOutputDataV3>());
    for (EyeId eye : {RIGHT_EYE, LEFT_EYE}) {
        auto per_eye = boost::make_shared<GazeIntersectionOutputDataV4>();
        per_eye->setEyeId(eye);
        world->addSubObject(per_eye);
    }
    world->addSubObject(boost::make_shared<HeadIntersectionOutputDataV2>());
    return world;
}

boost::shared_ptr<FeatureSetsByCamera> features() {
    auto pupil = boost::make_shared<FeaturePoint>(FeaturePoint::RIGHT_PUPIL_ID);
    pupil->setPosition(0.5f, 0.25f);
    auto face = boost::make_shared<FeatureRect>(FeatureRect::FACE_RECT_ID);
    face->setRect(0.3f, 0.2f, 0.4f, 0.5f);
    auto set = boost::make_shared<FeatureSet>(FeatureSet::FEATURE_SET_CAM_A_ID);
    set->addSubObject(pupil);
    set->addSubObject(face);
    auto by_camera = boost::make_shared<FeatureSetsByCamera>();
    by_camera->addSubObject(set);
    return by_camera;
}

// A frame as the engine sends it: a face set with head, face (texture and image) and eye
// records, world intersections, features, images, vehicle and timing records, and
// compressed-stream tokens.
EngineOutputData typicalFrame(unsigned int frame_num) {
    EngineOutputData frame;
    frame.setFrameNum(frame_num);
    frame.addSubObject(faceSet());
    auto head = addHeadOutputDataIfMissing(frame);
    head->setTrackingState(true);
    head->setHeadPosition({0.05, -0.02, 0.65});
    addFaceSetOutputDataIfMissing(frame)->addSubObject(eyes());
    frame.addSubObject(world());
    frame.addSubObject(features());
    auto images = boost::make_shared<ImageCollectionOutputData>();
    images->addImage(smallImage("camera A"));
    images->addImage(smallImage("camera B"));
    frame.addSubObject(images);
    addTimingOutputDataIfMissing(frame)->setExperimentTime(12.5 + frame_num);
    addEngineStateOutputDataIfMissing(frame)->setState(1);
    addInertiaOutputDataIfMissing(frame)->setAccelZ(9.81f);
    auto gps = boost::make_shared<GPSOutputDataV2>();
    gps->setDataValid(true);
    gps->setSpeed(13.5f);
    frame.addSubObject(gps);
    auto events = boost::make_shared<CustomEventOutputData>();
    events->setFlag(3, true);
    frame.addSubObject(events);
    frame.addSubObject(boost::make_shared<CompressedSerializableToken>(3));
    frame.addSubObject(boost::make_shared<CompressedSerializableToken>(4));
    return frame;
}

// A frame of the first record generations, as older engines wrote them.
EngineOutputData olderFrame(unsigned int frame_num) {
    EngineOutputData frame;
    frame.setFrameNum(frame_num);
    frame.addSubObject(boost::make_shared<HeadOutputData>());
    frame.addSubObject(boost::make_shared<FaceOutputData>());
    auto world = boost::make_shared<WorldOutputData>();
    world->addSubObject(boost::make_shared<GazeIntersectionOutputDataV1>());
    world->addSubObject(boost::make_shared<HeadIntersectionOutputDataV1>());
    frame.addSubObject(world);
    frame.addSubObject(boost::make_shared<GPSOutputData>());
    frame.addSubObject(boost::make_shared<HeadTrackerStateOutputData>());
    frame.addSubObject(boost::make_shared<IRPodStateOutputData>());
    return frame;
}

// Frames inside frames, one level deeper than a reader accepts.
Bytes nestedFrames() {
    EngineOutputData outer;
    for (int level = 1; level < 65; ++level) {
        auto inner = boost::make_shared<EngineOutputData>(outer);
        outer.clearSubObjects();
        outer.addSubObject(inner);
    }
    return eodfuzz::encode(outer);
}

// A frame whose image (and so the collection and the frame) needs the extended size field.
Bytes frameWithLargeImage() {
    const Bytes pixels(256 * 256, 0x80);
    auto image = boost::make_shared<ImageOutputData>();
    image->setNewImage(256, 256, 256, pixels.data(), 1);
    auto images = boost::make_shared<ImageCollectionOutputData>();
    images->addImage(image);
    EngineOutputData frame;
    frame.addSubObject(images);
    return eodfuzz::encode(frame);
}

// An encoding of every registered class in its default state.
std::vector<Bytes> defaultRecords() {
    std::vector<Bytes> records;
    for (char id : eodfuzz::registeredIds()) {
        records.push_back(eodfuzz::encode(*SerializableFactory::newObject(id)));
    }
    return records;
}

// Records as they stand in a buffer, a file or a stream: the unserialize target reads
// the same files, since their first byte is the id it picks.
void writeRecordSeeds(const std::string& dir) {
    const Bytes frame = eodfuzz::encode(typicalFrame(1000));
    writeSeed(dir, "frame", frame);
    writeSeed(dir, "frames", concat({frame, eodfuzz::encode(typicalFrame(1001))}));
    writeSeed(dir, "older-frame", eodfuzz::encode(olderFrame(7)));
    writeSeed(dir, "frames-nested-too-deep", nestedFrames());
    writeSeed(dir, "frame-with-large-image", frameWithLargeImage());
    const Bytes unknown = {50, 0, 2, 0xAB, 0xCD};
    writeSeed(dir, "unknown-then-frame", concat({unknown, frame}));
    writeSeed(dir, "frame-cut-in-header", prefix(frame, 2));
    writeSeed(dir, "frame-cut-in-half", prefix(frame, frame.size() / 2));
    writeSeed(dir, "frame-one-byte-short", prefix(frame, frame.size() - 1));
    for (const Bytes& record : defaultRecords()) {
        writeSeed(dir, "default-" + std::to_string(int(record[0])), record);
    }
    writeSeed(dir, "compressed", eodfuzz::encode(CompressedSerializable(Bytes{1, 2, 3})));
}

// A TCP stream: the first byte picks where the cycle of chunk sizes starts.
void writeStreamSeeds(const std::string& dir) {
    const Bytes frame = eodfuzz::encode(typicalFrame(1000));
    const Bytes older = eodfuzz::encode(olderFrame(1001));
    const Bytes other = eodfuzz::encode(TimingOutputData());
    writeSeed(dir, "frames-from-1-byte-chunk", concat({{0}, frame, older}));
    writeSeed(dir, "mixed-from-32-byte-chunk",
              concat({{6}, frame, other, older, prefix(frame, 40)}));
    writeSeed(dir, "unknown-from-1024-byte-chunk", concat({{7}, {50, 0, 1, 9}, frame}));
}

// The bytes SerialPort::sendDatagram puts on the line for each payload, read from the other
// side of a pseudo-terminal.
Bytes onTheLine(const std::vector<Bytes>& payloads) {
    int master = -1;
    int slave = -1;
    char name[128];
    if (::openpty(&master, &slave, name, nullptr, nullptr) != 0) {
        std::cerr << "openpty failed\n";
        std::exit(1);
    }
    Bytes line;
    {
        io::SerialPort port(name, io::BAUD_115200, false);
        port.open(true, 0);
        for (const Bytes& payload : payloads) port.sendDatagram(payload);
        ::fcntl(master, F_SETFL, O_NONBLOCK);
        unsigned char chunk[4096];
        ssize_t n = 0;
        while ((n = ::read(master, chunk, sizeof chunk)) > 0)
            line.insert(line.end(), chunk, chunk + n);
    }
    ::close(slave);
    ::close(master);
    return line;
}

void writeSerialSeeds(const std::string& dir) {
    const Bytes frame = eodfuzz::encode(typicalFrame(1000));
    const Bytes stuffed = {0xAA, 0x55, 0x01, 0xAA, 0xAA, 0x00};
    writeSeed(dir, "frame", onTheLine({frame}));
    writeSeed(dir, "three-datagrams", onTheLine({stuffed, Bytes(), {1, 2, 3}}));
    Bytes bad_crc = onTheLine({{1, 2, 3, 4}});
    bad_crc[bad_crc.size() - 3] ^= 0x01;
    writeSeed(dir, "bad-crc-then-datagram", concat({bad_crc, onTheLine({stuffed})}));
    writeSeed(dir, "noise-then-datagram",
              concat({{0x00, 0xAA, 0xAA, 0x55, 0x17}, onTheLine({stuffed})}));
    const Bytes line = onTheLine({frame});
    writeSeed(dir, "frame-cut-short", prefix(line, line.size() / 2));
}

// A zlib record stream. First byte 0: the rest is the encoder's output as it stands;
// first byte 3: the rest is the plain stream of framed records, which the target deflates
// after fixing the CRCs.
void writeZlibSeeds(const std::string& dir) {
    const Bytes frame = eodfuzz::encode(typicalFrame(1000));
    const Bytes older = eodfuzz::encode(olderFrame(1001));
    Bytes compressed;
    io::ZLibEncoder encoder(-1, 0);
    encoder.encode(typicalFrame(1000), 1, compressed);
    encoder.encode(olderFrame(1001), 2, compressed);
    encoder.encode(TimingOutputData(), 3, compressed);
    encoder.flush(compressed);
    writeSeed(dir, "encoded", concat({{0}, compressed}));
    writeSeed(dir, "encoded-cut-short", concat({{0}, prefix(compressed, compressed.size() / 2)}));

    const auto framed = [](unsigned int tag, const Bytes& record) {
        Bytes f;
        detail::appendU32LE(f, tag);
        detail::appendU32LE(f, 0);  // the target fixes the CRC
        detail::appendU32LE(f, static_cast<unsigned int>(record.size()));
        f.insert(f.end(), record.begin(), record.end());
        return f;
    };
    const Bytes unknown = {50, 0, 1, 9};
    writeSeed(
        dir, "plain-frames",
        concat({{3}, framed(1, frame), framed(2, Bytes()), framed(3, unknown), framed(4, older)}));

    // Frames of length 0 (tag, CRC 0, length 0) are legal and cost 12 bytes each before
    // compression and almost nothing after: a decompression bomb for the decoder's queue.
    // Frames of tag 0, as many zero bytes: more than the decoder queues at a time, few
    // enough to keep an execution short.
    const Bytes empty_frames(60000 * io::ZLibDecoder::FRAME_HEADER_BYTES, 0);
    Bytes counted;
    for (unsigned int tag = 0; tag < 100; ++tag) {
        const Bytes f = framed(tag, Bytes());
        counted.insert(counted.end(), f.begin(), f.end());
    }
    writeSeed(dir, "empty-frames-plain", concat({{1}, counted}));
    z_stream z{};
    deflateInit2(&z, Z_BEST_COMPRESSION, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
    Bytes bomb(deflateBound(&z, empty_frames.size()));
    z.next_in = const_cast<Bytef*>(empty_frames.data());
    z.avail_in = static_cast<uInt>(empty_frames.size());
    z.next_out = bomb.data();
    z.avail_out = static_cast<uInt>(bomb.size());
    deflate(&z, Z_FULL_FLUSH);
    bomb.resize(z.total_out);
    deflateEnd(&z);
    writeSeed(dir, "empty-frames-bomb", concat({{0}, bomb}));
}

// A recording as the log writer leaves it, packed as the log reader target reads it: flags
// (number of files - 1, bit 2 to merge only the id in the next byte), that id, then each
// file as a 2-byte length and its bytes.
void writeLogSeeds(const std::string& dir) {
    char tmp[] = "/tmp/eodcorpusXXXXXX";
    if (::mkdtemp(tmp) == nullptr) {
        std::cerr << "mkdtemp failed\n";
        std::exit(1);
    }
    const std::vector<char> ids = {
        TimingOutputData::THIS_OBJECT_ID, HeadOutputDataV2::THIS_OBJECT_ID,
        FaceOutputDataV2::THIS_OBJECT_ID, EngineStateOutputData::THIS_OBJECT_ID};
    {
        io::EngineOutputDataFileWriter writer;
        writer.newFiles(ids, std::string(tmp), std::string(), 4096);
        for (unsigned int n = 1; n <= 3; ++n) writer.writeData(typicalFrame(n));
    }
    std::vector<Bytes> files;
    for (char id : ids) {
        const std::wstring name = io::EngineOutputDataFileWriter::objectIDToFileName(id);
        const std::string path =
            std::string(tmp) + "/" + std::string(name.begin(), name.end()) + ".tql";
        std::ifstream in(path, std::ios::binary);
        files.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        ::unlink(path.c_str());
    }
    ::rmdir(tmp);
    const auto pack = [](unsigned char flags, char merge_id, const std::vector<Bytes>& parts) {
        Bytes packed = {flags, static_cast<unsigned char>(merge_id)};
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (i + 1 < parts.size())
                detail::appendU16(packed, static_cast<std::uint16_t>(parts[i].size()));
            packed.insert(packed.end(), parts[i].begin(), parts[i].end());
        }
        return packed;
    };
    writeSeed(dir, "recording", pack(3, 0, files));
    writeSeed(dir, "recording-head-only", pack(7, HeadOutputDataV2::THIS_OBJECT_ID, files));
    writeSeed(dir, "timing-cut-short", pack(0, 0, {prefix(files[0], files[0].size() - 3)}));
}

// Each codec's own stream of a typical frame (with its small image) and of an image alone,
// for the codec decoder targets: a first byte choosing the chunking, then the bytes.
void writeCodecSeeds(const std::string& root) {
    for (const std::string codec : {"zstd", "lz4", "lossless-image", "vp8"}) {
        std::string target = codec;
        target.erase(std::remove(target.begin(), target.end(), '-'), target.end());
        const auto encoder = io::SerializableCompressorEncoderFactory::create(io::CodecSettings(codec));
        Bytes compressed;
        encoder->encode(typicalFrame(1000), 0, compressed);
        encoder->encode(*smallImage("eye"), 1, compressed);
        encoder->flush(compressed);
        writeSeed(root + "/" + target + "decoder_fuzz", "encoded", concat({{0}, compressed}));
    }
}

// A small container of each built-in profile, as the container reader target reads it.
void writeContainerSeeds(const std::string& dir) {
    char path[] = "/tmp/eodcontainerXXXXXX";
    const int fd = ::mkstemp(path);
    ::close(fd);
    for (const std::string& profile : io::CompressionProfileRegistry::profileNames()) {
        {
            io::CompressingFileWriter writer;
            writer.open(std::string(path), io::CompressionProfileRegistry::profile(profile));
            for (unsigned int n = 0; n < 3; ++n) writer.writeFrame(typicalFrame(n));
            writer.close();
        }
        std::ifstream in(path, std::ios::binary);
        writeSeed(dir, profile, Bytes(std::istreambuf_iterator<char>(in), {}));
    }
    ::unlink(path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_corpus <corpus directory>\n";
        return 2;
    }
    const std::string root = argv[1];
    ::mkdir(root.c_str(), 0755);
    writeRecordSeeds(root + "/factory_fuzz");
    writeRecordSeeds(root + "/unserialize_fuzz");
    writeStreamSeeds(root + "/tcpclient_fuzz");
    writeSerialSeeds(root + "/serialport_fuzz");
    writeZlibSeeds(root + "/zlibdecoder_fuzz");
    writeLogSeeds(root + "/logfilereader_fuzz");
    writeRecordSeeds(root + "/upgrade_fuzz");
    writeCodecSeeds(root);
    writeContainerSeeds(root + "/container_fuzz");
    return 0;
}
