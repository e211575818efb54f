#include <algorithm>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include <eod/eod.h>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using eodtest::engineRecordBytes;
using eodtest::serializableError;

namespace {

FaceLandmark landmark(int id, float x, float y, float z, float u, float v) {
    FaceLandmark l;
    l.id = id;
    l.coordinate = {x, y, z};
    l.texture_coordinate = {u, v};
    return l;
}

boost::shared_ptr<ImageOutputData> textureImage() {
    static const unsigned char pixels[4] = {10, 20, 30, 40};
    boost::shared_ptr<ImageOutputData> image(new ImageOutputData());
    image->setNewImage(2, 2, 2, pixels, 1);
    image->setImageIdentifier("texture");
    return image;
}

boost::shared_ptr<FaceTextureOutputData> faceTexture() {
    boost::shared_ptr<FaceTextureOutputData> texture(new FaceTextureOutputData());
    texture->addFaceTexture(static_cast<FaceTextureOutputData::FaceTextureType>(3), textureImage());
    texture->setPixelTransform(1.5f, -2.0f, 0.25f, 8.0f);
    texture->addMaskLandmark(landmark(800, 1, 2, 3, 0.1f, 0.2f));
    texture->addMaskLandmark(landmark(899, -1, -2, -3, 0.9f, 0.8f));
    return texture;
}

template <class Face>
Face face() {
    Face f;
    f.addLandmark(landmark(0, 1, 2, 3, 0.5f, 0.25f));
    f.addLandmark(landmark(702, 4, 5, 6, 0.75f, 0.125f));
    f.addLandmark(landmark(-5, 7, 8, 9, 1, 0));  // any id outside 800..899
    f.addLandmark(landmark(1000, 0, 0, 0, 0, 0));
    f.addFaceTexture(faceTexture());
    return f;
}

FaceOutputDataV2 faceV2() {
    FaceOutputDataV2 f = face<FaceOutputDataV2>();
    f.setFaceCount(2);
    f.setWearingGlasses(WEARING_GLASSES);
    return f;
}

void expectSameTexture(const FaceTextureOutputData& a, const FaceTextureOutputData& b) {
    EXPECT_EQ(a.faceTextureType(), b.faceTextureType());
    EXPECT_EQ(a.pixelTransform(), b.pixelTransform());
    EXPECT_EQ(a.faceMaskLandmarks(), b.faceMaskLandmarks());
    ASSERT_TRUE(a.faceTexture() && b.faceTexture());
    EXPECT_EQ(encode(*a.faceTexture()), encode(*b.faceTexture()));
}

template <class Face>
void expectSameFace(const Face& a, const Face& b) {
    EXPECT_EQ(a.faceLandmarks(), b.faceLandmarks());
    ASSERT_TRUE(a.faceTexture() && b.faceTexture());
    expectSameTexture(*a.faceTexture(), *b.faceTexture());
}

void appendLandmark(Bytes& out, int id) {
    detail::appendNumber(out, id);
    for (int i = 0; i < 5; ++i) detail::appendNumber(out, 0.0f);
}

void expectReadError(const Bytes& bytes, const std::string& message) {
    int pos = 0;
    try {
        SerializableFactory::newObject(bytes, pos);
        ADD_FAILURE() << "no error";
    } catch (const SerializableError&) {
        // The factory rewords the record's error; read the record directly for its own text.
    }
    boost::shared_ptr<Serializable> record = SerializableFactory::newObject(bytes[0]);
    EXPECT_EQ(serializableError([&] { record->unSerialize(bytes, pos); }), message);
    EXPECT_EQ(pos, 0);
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, pos, status));
    EXPECT_EQ(status, 8u);
}

}  // namespace

TEST(FaceLandmarkIds, ListsHoldTheFixedIdsInOrder) {
    EXPECT_EQ(FLM_IDS_REFERENCE(), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(FLM_IDS_EYE_CORNERS(), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(FLM_IDS_OUTER_LIP(), (std::vector<int>{4, 100, 101, 102, 5, 103, 104, 105}));
    EXPECT_EQ(FLM_IDS_INNER_LIP(), (std::vector<int>{200, 201, 202, 203, 204, 205, 206, 207}));
    EXPECT_EQ(FLM_IDS_LIPS(), (std::vector<int>{4, 100, 101, 102, 5, 103, 104, 105, 200, 201, 202,
                                                203, 204, 205, 206, 207}));
    EXPECT_EQ(FLM_IDS_NOSE(), (std::vector<int>{6, 7, 500, 501, 502, 503}));
    EXPECT_EQ(FLM_IDS_RIGHT_EYE(), (std::vector<int>{600, 601, 602}));
    EXPECT_EQ(FLM_IDS_LEFT_EYE(), (std::vector<int>{700, 701, 702}));
    EXPECT_EQ(FLM_IDS_RIGHT_EYEBROW(), (std::vector<int>{300, 301, 302}));
    EXPECT_EQ(FLM_IDS_LEFT_EYEBROW(), (std::vector<int>{400, 401, 402}));
    EXPECT_EQ(FLM_IDS_ALL_FIXED(),
              (std::vector<int>{0,   1,   2,   3,   4,   5,   6,   7,   100, 101, 102, 103, 104,
                                105, 200, 201, 202, 203, 204, 205, 206, 207, 700, 701, 702, 600,
                                601, 602, 400, 401, 402, 300, 301, 302, 500, 501, 502, 503}));
    EXPECT_EQ(&FLM_IDS_LIPS(), &FLM_IDS_LIPS());  // built once
}

TEST(FaceRecords, RegisteredUnderTheirIds) {
    const struct {
        char id;
        const std::type_info& type;
    } records[] = {{30, typeid(ImageCollectionOutputData)},
                   {31, typeid(ImageOutputData)},
                   {91, typeid(FaceOutputData)},
                   {92, typeid(FaceTextureOutputData)},
                   {93, typeid(FaceOutputDataV2)},
                   {94, typeid(FaceSetOutputData)}};
    for (const auto& r : records) {
        SCOPED_TRACE(int(r.id));
        const boost::shared_ptr<Serializable> made = SerializableFactory::newObject(r.id);
        ASSERT_TRUE(made);
        EXPECT_EQ(typeid(*made), r.type);
        EXPECT_EQ(made->objectID(), r.id);
    }
}

TEST(FaceOutputData, EncodesCountThenLandmarksInAscendingIdOrder) {
    FaceOutputData f;
    f.addLandmark(landmark(100, 1.0f, 2.0f, -1.0f, 0.5f, 0.25f));
    EXPECT_EQ(encode(f),
              (Bytes{0x5B, 0x00, 0x1E, 0x01,  // id 91, 30 bytes, flag
                     0,    0,    0,    1,     // one landmark
                     0,    0,    0,    100,   // its id
                     0x3F, 0x80, 0,    0,    0x40, 0,    0, 0, 0xBF, 0x80, 0, 0,  // x y z
                     0x3F, 0,    0,    0,    0x3E, 0x80, 0, 0,                    // u v
                     0x00}));                                                     // no subs
}

TEST(FaceRecords, OwnDataGrowsBy24BytesPerLandmark) {
    for (unsigned int n : {0u, 1u, 3u}) {
        SCOPED_TRACE(n);
        FaceOutputData v1;
        FaceOutputDataV2 v2;
        FaceTextureOutputData texture;
        for (unsigned int i = 0; i < n; ++i) {
            v1.addLandmark(landmark(int(i), 1, 1, 1, 1, 1));
            v2.addLandmark(landmark(int(i), 1, 1, 1, 1, 1));
            texture.addMaskLandmark(landmark(800 + int(i), 1, 1, 1, 1, 1));
        }
        // Own data = flag byte + engine-specific data.
        EXPECT_EQ(v1.numOwnDataBytes(), 1 + 4 + 24 * n);
        EXPECT_EQ(v2.numOwnDataBytes(), 1 + 9 + 24 * n);
        EXPECT_EQ(texture.numOwnDataBytes(), 1 + 24 + 24 * n);
        EXPECT_EQ(encode(v1).size(), v1.numTotalBytes());
        EXPECT_EQ(encode(v2).size(), v2.numTotalBytes());
        EXPECT_EQ(encode(texture).size(), texture.numTotalBytes());
    }
}

TEST(FaceOutputData, RoundTripsWithItsTexture) {
    const FaceOutputData original = face<FaceOutputData>();
    const Bytes bytes = encode(original);
    FaceOutputData read;
    read.addLandmark(landmark(5, 1, 1, 1, 1, 1));  // cleared by reading
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    expectSameFace(read, original);
    const auto made = eodtest::decodeViaFactory<FaceOutputData>(bytes);
    ASSERT_TRUE(made);
    expectSameFace(*made, original);
    EXPECT_EQ(encode(*made), bytes);
}

TEST(FaceOutputDataV2, RoundTripsFaceCountGlassesAndTexture) {
    const FaceOutputDataV2 original = faceV2();
    const Bytes bytes = encode(original);
    for (const auto& read : {eodtest::decodeViaFactory<FaceOutputDataV2>(bytes),
                             boost::shared_ptr<FaceOutputDataV2>(original.clone())}) {
        ASSERT_TRUE(read);
        expectSameFace(*read, original);
        EXPECT_EQ(read->faceCount(), 2u);
        EXPECT_EQ(read->wearingGlasses(), WEARING_GLASSES);
        EXPECT_NE(read->faceTexture(), original.faceTexture());  // deep
        EXPECT_EQ(encode(*read), bytes);
    }
    const FaceOutputDataV2 fresh;
    EXPECT_EQ(fresh.faceCount(), 0xFFFFFFFFu);
    EXPECT_EQ(fresh.wearingGlasses(), WEARING_GLASSES_UNKNOWN);
    EXPECT_EQ(fresh.numOwnDataBytes(), 10u);
}

TEST(FaceTextureOutputData, RoundTripsTypeTransformMaskAndImage) {
    const auto original = faceTexture();
    const Bytes bytes = encode(*original);
    const auto read = eodtest::decodeViaFactory<FaceTextureOutputData>(bytes);
    ASSERT_TRUE(read);
    expectSameTexture(*read, *original);
    EXPECT_EQ(read->faceTextureType(), 3);
    EXPECT_EQ(read->pixelTransform(), (std::vector<float>{1.5f, -2.0f, 0.25f, 8.0f}));
    FaceCoordinate c;
    FaceTextureCoordinate t;
    EXPECT_TRUE(read->faceMaskCoordinate(899, c));
    EXPECT_EQ(c, (FaceCoordinate{-1, -2, -3}));
    EXPECT_TRUE(read->faceMaskTextureCoordinate(800, t));
    EXPECT_EQ(t, (FaceTextureCoordinate{0.1f, 0.2f}));
    EXPECT_FALSE(read->faceMaskCoordinate(850, c));
}

TEST(FaceSetOutputData, HasNoOwnBytesAndSitsBesideOtherFaceSets) {
    EXPECT_EQ(encode(FaceSetOutputData()), (Bytes{0x5E, 0x00, 0x02, 0x01, 0x00}));

    boost::shared_ptr<FaceSetOutputData> set(new FaceSetOutputData());
    EXPECT_EQ(set->faceOutputData(), nullptr);
    boost::shared_ptr<FaceOutputDataV2> f(new FaceOutputDataV2(faceV2()));
    set->addSubObject(f);
    EXPECT_EQ(set->faceOutputData(), f);

    EngineOutputData frame;
    frame.addSubObject(set);
    frame.addSubObject(boost::shared_ptr<FaceSetOutputData>(new FaceSetOutputData()));
    EXPECT_EQ(frame.numSubObjects(FaceSetOutputData::THIS_OBJECT_ID), 2);

    const auto read = eodtest::decodeViaFactory<EngineOutputData>(encode(frame));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->numSubObjects(FaceSetOutputData::THIS_OBJECT_ID), 2);
    const auto read_set =
        read->typedSubObjectAtIndex<FaceSetOutputData>(FaceSetOutputData::THIS_OBJECT_ID, 0);
    ASSERT_TRUE(read_set->faceOutputData());
    expectSameFace(*read_set->faceOutputData(), *f);
    EXPECT_EQ(read_set->faceOutputData()->faceCount(), 2u);
}

TEST(FaceOutputDataV2, LandmarkOperations) {
    FaceOutputDataV2 f;
    f.addLandmark(landmark(700, 1, 2, 3, 4, 5));
    f.addLandmark(landmark(701, 1, 2, 3, 4, 5));
    EXPECT_TRUE(f.hasLandmark(700));
    EXPECT_FALSE(f.hasAllLandmarks(FLM_IDS_LEFT_EYE()));
    f.addLandmark(landmark(702, 1, 2, 3, 4, 5));
    EXPECT_TRUE(f.hasAllLandmarks(FLM_IDS_LEFT_EYE()));

    f.addLandmark(landmark(700, 9, 9, 9, 9, 9));  // replaces
    EXPECT_EQ(f.faceLandmarks().size(), 3u);
    FaceCoordinate c;
    FaceTextureCoordinate t;
    ASSERT_TRUE(f.faceCoordinate(700, c));
    EXPECT_EQ(c, (FaceCoordinate{9, 9, 9}));

    f.setFaceCoordinate(701, {7, 7, 7});  // keeps the texture coordinate
    ASSERT_TRUE(f.faceTextureCoordinate(701, t));
    EXPECT_EQ(t, (FaceTextureCoordinate{4, 5}));
    f.setFaceCoordinate(300, {1, 2, 3});  // adds, with a zero texture coordinate
    EXPECT_EQ(f.faceLandmarks().at(300), landmark(300, 1, 2, 3, 0, 0));

    f.clearLandmark(300);
    EXPECT_FALSE(f.faceCoordinate(300, c));
    EXPECT_FALSE(f.faceTextureCoordinate(300, t));
    f.clearLandmarks();
    EXPECT_TRUE(f.faceLandmarks().empty());
}

TEST(FaceOutputData, ZeroLandmarkZeroesTheCoordinateOnly) {
    FaceOutputData f;
    f.addLandmark(landmark(6, 1, 2, 3, 4, 5));
    f.zeroLandmark(6);
    f.zeroLandmark(7);  // absent: nothing happens
    EXPECT_EQ(f.faceLandmarks().at(6), landmark(6, 0, 0, 0, 4, 5));
    EXPECT_EQ(f.faceLandmarks().size(), 1u);
}

TEST(FaceRecords, LandmarkIdRulesAreComplementaryAndFailuresChangeNothing) {
    FaceOutputData v1 = face<FaceOutputData>();
    FaceOutputDataV2 v2 = faceV2();
    FaceTextureOutputData texture = *faceTexture();
    const Bytes v1_before = encode(v1), v2_before = encode(v2), texture_before = encode(texture);

    for (int id : {800, 850, 899}) {
        SCOPED_TRACE(id);
        EXPECT_USAGE_ERROR(v1.addLandmark(landmark(id, 1, 1, 1, 1, 1)), "faceoutputdata",
                           "invalid landmark");
        EXPECT_USAGE_ERROR(v1.setFaceCoordinate(id, {}), "faceoutputdata", "invalid landmark");
        EXPECT_USAGE_ERROR(v2.addLandmark(landmark(id, 1, 1, 1, 1, 1)), "faceoutputdatav2",
                           "invalid landmark");
        EXPECT_USAGE_ERROR(v2.setFaceCoordinate(id, {}), "faceoutputdatav2", "invalid landmark");
    }
    for (int id : {799, 900, 0, -1}) {
        SCOPED_TRACE(id);
        EXPECT_USAGE_ERROR(texture.addMaskLandmark(landmark(id, 1, 1, 1, 1, 1)),
                           "facetextureoutputdata", "landmark.id outside the range 800..899");
    }
    EXPECT_USAGE_ERROR(v2.setWearingGlasses(static_cast<WearingGlassesType>(256)),
                       "faceoutputdatav2", "wearing_glasses outside the range 0..255");
    EXPECT_USAGE_ERROR(v2.setWearingGlasses(static_cast<WearingGlassesType>(-1)),
                       "faceoutputdatav2", "wearing_glasses outside the range 0..255");
    EXPECT_EQ(encode(v1), v1_before);
    EXPECT_EQ(encode(v2), v2_before);
    EXPECT_EQ(encode(texture), texture_before);

    FaceOutputData accepting;
    accepting.addLandmark(landmark(799, 1, 1, 1, 1, 1));
    accepting.addLandmark(landmark(900, 1, 1, 1, 1, 1));
    FaceTextureOutputData mask;
    mask.addMaskLandmark(landmark(800, 1, 1, 1, 1, 1));
    mask.addMaskLandmark(landmark(899, 1, 1, 1, 1, 1));
    EXPECT_EQ(accepting.faceLandmarks().size() + mask.faceMaskLandmarks().size(), 4u);
}

TEST(FaceTextureOutputData, TakesOnlyAnImageAsChild) {
    FaceTextureOutputData texture = *faceTexture();
    const auto image = texture.faceTexture();
    const Bytes before = encode(texture);

    EXPECT_USAGE_ERROR(
        texture.addFaceTexture(FaceTextureOutputData::INVALID_FACE_TEXTURE_TYPE, textureImage()),
        "facetextureoutputdata", "invalid type, face_texure values");
    EXPECT_THROW(texture.addFaceTexture(static_cast<FaceTextureOutputData::FaceTextureType>(5),
                                        boost::shared_ptr<ImageOutputData>()),
                 SerializableError);
    EXPECT_EQ(serializableError([&] {
                  texture.addSubObject(boost::shared_ptr<FaceOutputDataV2>(new FaceOutputDataV2()));
              }),
              "FaceTextureOutputData::doAddSubObject - object not derived from "
              "ImageOutputData");
    EXPECT_THROW(texture.addSubObject(textureImage()), SerializableError);  // one image only
    EXPECT_EQ(texture.faceTexture(), image);
    EXPECT_EQ(encode(texture), before);

    const auto replacement = textureImage();
    texture.addFaceTexture(static_cast<FaceTextureOutputData::FaceTextureType>(5), replacement);
    EXPECT_EQ(texture.faceTexture(), replacement);
    EXPECT_EQ(texture.faceTextureType(), 5);
    EXPECT_EQ(texture.numSubObjects(), 1);
    EXPECT_EQ(FaceTextureOutputData().faceTextureType(),
              FaceTextureOutputData::INVALID_FACE_TEXTURE_TYPE);
}

TEST(FaceOutputDataV2, AddFaceTextureReplacesAndRefusesNull) {
    FaceOutputDataV2 f = faceV2();
    const auto first = f.faceTexture();
    EXPECT_THROW(f.addFaceTexture(boost::shared_ptr<FaceTextureOutputData>()), SerializableError);
    EXPECT_EQ(f.faceTexture(), first);
    const auto second = faceTexture();
    f.addFaceTexture(second);
    EXPECT_EQ(f.faceTexture(), second);
    EXPECT_EQ(f.numSubObjects(), 1);
}

TEST(FaceRecords, PrintOneHundredNinetyFixedColumns) {
    FaceOutputData v1;
    v1.addLandmark(landmark(100, 1, 2, -1, 0.5f, 0.25f));
    v1.addLandmark(landmark(999, 7, 7, 7, 7, 7));  // not a fixed id: not printed
    FaceOutputDataV2 v2;
    v2.addLandmark(landmark(100, 1, 2, -1, 0.5f, 0.25f));
    for (const SerializableComposite* f :
         std::initializer_list<const SerializableComposite*>{&v1, &v2}) {
        const auto labels = eodtest::splitColumns(eodtest::headerLine(*f));
        const auto values = eodtest::splitColumns(eodtest::valueLine(*f));
        ASSERT_EQ(labels.size(), 190u);
        ASSERT_EQ(values.size(), 190u);
        EXPECT_EQ(labels[0], "FLM_0_X");
        EXPECT_EQ(labels[24], "FLM_100_X");
        EXPECT_EQ(labels[66], "FLM_700_X");
        EXPECT_EQ(labels[113], "FLM_503_Z");
        EXPECT_EQ(labels[114], "FLM_0_U");
        EXPECT_EQ(labels[130], "FLM_100_U");
        EXPECT_EQ(labels[189], "FLM_503_V");
        // Landmark 100: x, y, z in columns 24..26, u, v in 130 and 131; zeros elsewhere.
        std::vector<std::string> expected(190, "0");
        expected[24] = "1";
        expected[25] = "2";
        expected[26] = "-1";
        expected[130] = "0.5";
        expected[131] = "0.25";
        for (std::size_t i = 0; i < values.size(); ++i) {
            SCOPED_TRACE(labels[i]);
            EXPECT_EQ(values[i], expected[i]);
        }
    }
}

TEST(FaceRecords, HostileLandmarkCountsAreRejected) {
    const Bytes tail = {0, 0, 0, 1, 2};  // face count, glasses of a V2
    struct Case {
        const char* name;
        int count;
        int landmarks_present;
        const char* reason;
    };
    const Case cases[] = {
        {"negative", -1, 0, "num_coords >= 0 violated"},
        {"most negative", INT32_MIN, 1, "num_coords >= 0 violated"},
        {"huge", 0x7FFFFFFF, 1, "number of landmarks exceeds amount of data in buffer"},
        // 24 x count is 8 in 32-bit arithmetic.
        {"wrapping", 0x0AAAAAAB, 1, "number of landmarks exceeds amount of data in buffer"},
        {"one short", 3, 2, "number of landmarks exceeds amount of data in buffer"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes v1, v2, texture(20, 0);
        for (Bytes* b : {&v1, &v2, &texture}) {
            detail::appendNumber(*b, c.count);
            for (int i = 0; i < c.landmarks_present; ++i) appendLandmark(*b, 800 + i);
        }
        // The last landmark's bytes double as the face count and glasses of a V2.
        expectReadError(engineRecordBytes(91, v1),
                        std::string("FaceOutputData::readEngineSpecificData() - ") + c.reason);
        expectReadError(
            engineRecordBytes(92, texture),
            std::string("FaceTextureOutputData::readEngineSpecificData() - ") + c.reason);
        v2.insert(v2.end(), tail.begin(), tail.end());
        expectReadError(engineRecordBytes(93, v2),
                        std::string("FaceOutputDataV2::readEngineSpecificData() - ") + c.reason);
    }

}

// The id ranges are the setters' rule: a reader keeps a landmark of the other kind under its
// id, and the frame around it still reads.
TEST(FaceRecords, ReadersKeepLandmarksOfTheOtherKindUnderTheirIds) {
    struct Case {
        char id;
        Bytes own_fields_before;  // texture type and transform
        Bytes own_fields_after;   // face count and glasses
        int own_id;
        int foreign_id;
    };
    const Case cases[] = {{91, {}, {}, 100, 850},
                          {93, {}, {0, 0, 0, 1, 2}, 100, 800},
                          {92, Bytes(20, 0), {}, 810, 900},
                          {92, Bytes(20, 0), {}, 810, 5}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(int(c.id)) + " holding " + std::to_string(c.foreign_id));
        Bytes data = c.own_fields_before;
        detail::appendNumber(data, 2);
        appendLandmark(data, std::min(c.own_id, c.foreign_id));
        appendLandmark(data, std::max(c.own_id, c.foreign_id));
        data.insert(data.end(), c.own_fields_after.begin(), c.own_fields_after.end());
        // A frame numbered 7 around the record: enabled, frame number, one sub-record.
        const Bytes frame_bytes = eodtest::recordBytes(
            EngineOutputData::THIS_OBJECT_ID,
            eodtest::concat({{0x01, 0, 0, 0, 7, 0x01}, engineRecordBytes(c.id, data)}));
        const auto read = eodtest::decodeViaFactory<EngineOutputData>(frame_bytes);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->frameNum(), 7u);
        const auto sub = read->subObject(c.id);
        ASSERT_TRUE(sub);
        const std::map<int, FaceLandmark>* landmarks = nullptr;
        if (const auto v1 = boost::dynamic_pointer_cast<const FaceOutputData>(sub)) {
            landmarks = &v1->faceLandmarks();
        } else if (const auto v2 = boost::dynamic_pointer_cast<const FaceOutputDataV2>(sub)) {
            landmarks = &v2->faceLandmarks();
        } else if (const auto t = boost::dynamic_pointer_cast<const FaceTextureOutputData>(sub)) {
            landmarks = &t->faceMaskLandmarks();
        }
        ASSERT_TRUE(landmarks);
        EXPECT_EQ(landmarks->size(), 2u);
        EXPECT_EQ(landmarks->count(c.foreign_id), 1u);
        EXPECT_EQ(landmarks->at(c.foreign_id).id, c.foreign_id);
    }
}

TEST(FaceRecords, EveryTruncationIsRejected) {
    FaceSetOutputData set;
    set.addSubObject(boost::shared_ptr<FaceOutputDataV2>(new FaceOutputDataV2(faceV2())));
    const Bytes encodings[] = {encode(face<FaceOutputData>()), encode(faceV2()),
                               encode(*faceTexture()), encode(set)};
    for (const Bytes& bytes : encodings) {
        SCOPED_TRACE(int(bytes[0]));
        eodtest::expectEveryTruncationRejected(bytes);
    }
}
