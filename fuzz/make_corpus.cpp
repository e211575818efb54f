// Writes the seed corpora of the fuzz targets from real encodings:
//
//     make_corpus <fuzz/corpus>
//
// For each target a directory of small files: a typical frame with sub-records, a default
// record of every registered class, records back to back, and a few truncations. Rerun it
// and commit the result when a record's encoding changes or a record class is added.

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <sys/stat.h>

#include <eod/eod.h>

#include "fuzz/fuzzing.h"

using namespace tq::eod;
using eodfuzz::Bytes;

namespace {

void writeSeed(const std::string& dir, const std::string& name, const Bytes& bytes) {
    ::mkdir(dir.c_str(), 0755);
    std::ofstream out(dir + "/" + name, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
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

// A frame as the engine sends it: a face set with face, texture and image, an image
// collection, and compressed-stream tokens.
EngineOutputData typicalFrame(unsigned int frame_num) {
    EngineOutputData frame;
    frame.setFrameNum(frame_num);
    frame.addSubObject(faceSet());
    auto images = boost::make_shared<ImageCollectionOutputData>();
    images->addImage(smallImage("camera A"));
    images->addImage(smallImage("camera B"));
    frame.addSubObject(images);
    frame.addSubObject(boost::make_shared<CompressedSerializableToken>(3));
    frame.addSubObject(boost::make_shared<CompressedSerializableToken>(4));
    return frame;
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
    return 0;
}
