#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>

#include <gtest/gtest.h>

#include <eod/eod.h>

#include "eod/detail/bytecodec.h"
#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using eodtest::serializableError;

namespace {

bool isAligned(const void* p) { return reinterpret_cast<std::uintptr_t>(p) % 32 == 0; }

// A 2 x 2 image with 3 bytes per line (one byte of padding per line).
ImageOutputData smallImage(const std::string& identifier = "ab") {
    static const unsigned char pixels[6] = {1, 2, 3, 4, 5, 6};
    ImageOutputData image;
    image.setNewImage(2, 2, 3, pixels, 7);
    image.setImageIdentifier(identifier);
    return image;
}

Bytes rawBytes(const ImageOutputData& image) {
    const unsigned char* p = image.rawData();
    return p ? Bytes(p, p + image.height() * image.bytesPerLine()) : Bytes();
}

void expectSameImage(const ImageOutputData& a, const ImageOutputData& b) {
    EXPECT_EQ(a.width(), b.width());
    EXPECT_EQ(a.height(), b.height());
    EXPECT_EQ(a.bytesPerLine(), b.bytesPerLine());
    EXPECT_EQ(a.imageFormat(), b.imageFormat());
    EXPECT_EQ(a.imageIdentifier(), b.imageIdentifier());
    EXPECT_EQ(rawBytes(a), rawBytes(b));
}

// An image record whose header fields announce height x bytes_per_line raw bytes while only
// `present` follow; the record header itself is honest about the bytes that are there.
Bytes imageAnnouncing(unsigned int height, unsigned int bytes_per_line, std::size_t present) {
    Bytes data;
    detail::appendNumber(data, 1u);
    detail::appendNumber(data, height);
    detail::appendNumber(data, bytes_per_line);
    detail::appendString(data, "x");
    detail::appendNumber(data, 0);
    data.resize(data.size() + present, 0xAB);
    return eodtest::recordBytes(ImageOutputData::THIS_OBJECT_ID, data);
}

}  // namespace

TEST(ImageOutputData, EncodesGeometryIdentifierFormatAndRawBytes) {
    const Bytes expected = {0x1F, 0x00, 0x19,        // id 31, 25 data bytes
                            0, 0, 0, 2,  0, 0, 0, 2,  0, 0, 0, 3,  // width, height, bytes/line
                            'a', 'b', 0,              // identifier
                            0, 0, 0, 7,               // format
                            1, 2, 3, 4, 5, 6};
    const ImageOutputData image = smallImage();
    EXPECT_EQ(image.numDataBytes(), 25u);
    EXPECT_EQ(encode(image), expected);
}

TEST(ImageOutputData, RoundTripsThroughUnSerializeAndFactory) {
    const ImageOutputData original = smallImage();
    const Bytes bytes = encode(original);

    ImageOutputData read;
    read.setNewImage(1, 1, 1, reinterpret_cast<const unsigned char*>("z"), 1);  // freed by read
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    expectSameImage(read, original);
    EXPECT_TRUE(isAligned(read.rawData()));
    EXPECT_FALSE(read.isSharingMemory());

    const auto made = eodtest::decodeViaFactory<ImageOutputData>(bytes);
    ASSERT_TRUE(made);
    expectSameImage(*made, original);
    EXPECT_EQ(encode(*made), bytes);
}

TEST(ImageOutputData, EmptyImageCarriesHeaderFieldsOnlyAndReadsBackWithoutRawData) {
    ImageOutputData image;
    image.setNewImage(640, 0, 640, nullptr, 3);
    image.setImageIdentifier("cam");
    EXPECT_EQ(image.rawData(), nullptr);
    const Bytes bytes = encode(image);
    EXPECT_EQ(bytes.size(), 3u + 17u + 3u);

    ImageOutputData read = smallImage();
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    expectSameImage(read, image);
    EXPECT_EQ(read.rawData(), nullptr);
}

TEST(ImageOutputData, RawSizeBeyondTheBytesPresentIsRefusedBeforeAllocating) {
    struct Case {
        unsigned int height, bytes_per_line;
        std::size_t present;
    };
    const Case cases[] = {
        {2, 3, 5},                    // one byte short
        {65536, 65536, 0},            // 2^32: 0 in 32-bit arithmetic
        {0xFFFFFFFF, 0xFFFFFFFF, 1},  // 1 in 32-bit arithmetic
        {0x7FFFFFFF, 1, 4},           // would be a 2 GiB buffer
        {0xFFFFFFFF, 1, 16},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.height) + " x " + std::to_string(c.bytes_per_line));
        const Bytes bytes = imageAnnouncing(c.height, c.bytes_per_line, c.present);
        ImageOutputData image = smallImage();
        int pos = 0;
        // This message comes from the check made before any buffer is allocated.
        EXPECT_EQ(serializableError([&] { image.unSerialize(bytes, pos); }),
                  "ImageOutputData::readFromBuffer() - image size exceeds amount of data "
                  "in buffer");
        EXPECT_EQ(pos, 0);
        // The old raw data was released first; a failed read leaves an empty image.
        EXPECT_EQ(image.rawData(), nullptr);
        EXPECT_EQ(image.height() * image.bytesPerLine(), 0u);
        EXPECT_EQ(image.numTotalBytes(), encode(image).size());

        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, pos, status));
        EXPECT_EQ(status, 8u);
    }
}

TEST(ImageOutputData, EveryTruncationIsRejected) {
    eodtest::expectEveryTruncationRejected(encode(smallImage()));
}

TEST(ImageOutputData, SetNewImageCopiesIntoAnOwnedAlignedBuffer) {
    unsigned char pixels[4] = {9, 8, 7, 6};
    ImageOutputData image;
    image.setNewImage(4, 1, 4, pixels, 2);
    EXPECT_NE(image.rawData(), pixels);
    EXPECT_TRUE(isAligned(image.rawData()));
    EXPECT_FALSE(image.isSharingMemory());
    pixels[0] = 0;
    EXPECT_EQ(rawBytes(image), (Bytes{9, 8, 7, 6}));

    // From its own buffer: copied before the old buffer is released.
    image.setNewImage(2, 1, 2, image.rawData() + 2, 5);
    EXPECT_EQ(rawBytes(image), (Bytes{7, 6}));
}

TEST(ImageOutputData, FailedImageSettersLeaveTheImageUnchanged) {
    ImageOutputData image = smallImage();
    const unsigned char* raw = image.rawData();
    const Bytes before = encode(image);

    unsigned char* block = ImageOutputData::rawDataAlloc(64 + 16);
    unsigned char* misaligned = block + 16;  // 16 mod 32
    EXPECT_USAGE_ERROR(image.shareNewImage(8, 8, 8, misaligned, 1), "imageoutputdata",
                       "raw_data is not aligned correctly");
    EXPECT_USAGE_ERROR(image.shareNewImage(8, 8, 8, nullptr, 1), "imageoutputdata",
                       "raw_data is NULL");
    EXPECT_USAGE_ERROR(image.shareNewImage(2, 2, 3, image.rawData(), 1), "imageoutputdata",
                       "raw_data is already owned by this image");
    EXPECT_USAGE_ERROR(image.setNewImage(8, 8, 8, nullptr, 1), "imageoutputdata",
                       "raw_data is NULL");
    EXPECT_USAGE_ERROR(image.setNewImage(1, 65536, 65536, block, 1), "imageoutputdata",
                       "image too large");
    EXPECT_EQ(image.rawData(), raw);
    EXPECT_FALSE(image.isSharingMemory());
    EXPECT_EQ(encode(image), before);
    ImageOutputData::rawDataFree(block);
}

TEST(ImageOutputData, SharedBufferIsKeptAndNeverFreedByTheImage) {
    unsigned char* frame = ImageOutputData::rawDataAlloc(6);
    std::memcpy(frame, "abcdef", 6);
    {
        ImageOutputData image = smallImage();
        image.shareNewImage(3, 2, 3, frame, 4);
        EXPECT_EQ(image.rawData(), frame);
        EXPECT_TRUE(image.isSharingMemory());
        EXPECT_EQ(rawBytes(image), (Bytes{'a', 'b', 'c', 'd', 'e', 'f'}));

        // A copy owns its bytes, whichever way it is made.
        const ImageOutputData copy(image);
        ImageOutputData assigned;
        assigned = image;
        const std::unique_ptr<ImageOutputData> cloned(image.clone());
        for (const ImageOutputData* c :
             std::initializer_list<const ImageOutputData*>{&copy, &assigned, cloned.get()}) {
            EXPECT_FALSE(c->isSharingMemory());
            EXPECT_NE(c->rawData(), frame);
            EXPECT_TRUE(isAligned(c->rawData()));
            expectSameImage(*c, image);
        }

        image.freeRawData();  // only forgets the shared buffer
        EXPECT_EQ(image.rawData(), nullptr);
        EXPECT_FALSE(image.isSharingMemory());
        EXPECT_EQ(image.height() * image.bytesPerLine(), 0u);
        EXPECT_EQ(image.imageIdentifier(), "ab");
        image.shareNewImage(3, 2, 3, frame, 4);
    }  // the image goes without freeing frame; ASan would report a double free below
    EXPECT_EQ(frame[0], 'a');
    ImageOutputData::rawDataFree(frame);
}

TEST(ImageOutputData, RawDataAllocIsAlignedAndChecksItsSize) {
    for (int size : {1, 31, 33, 4096}) {
        unsigned char* p = ImageOutputData::rawDataAlloc(size);
        EXPECT_TRUE(isAligned(p));
        ImageOutputData::rawDataFree(p);
    }
    EXPECT_EQ(ImageOutputData::rawDataAlloc(0), nullptr);
    ImageOutputData::rawDataFree(nullptr);
    EXPECT_USAGE_ERROR(ImageOutputData::rawDataAlloc(-1), "imageoutputdata", "size is negative");
}

TEST(ImageOutputData, PrintsGeometryIdentifierAndFormatButNoPixels) {
    const ImageOutputData image = smallImage();
    EXPECT_EQ(eodtest::headerLine(image),
              "WIDTH\tHEIGHT\tBYTES_PER_LINE\tIMAGE_IDENTIFIER\tIMAGE_FORMAT");
    EXPECT_EQ(eodtest::valueLine(image), "2\t2\t3\tab\t7");
}

namespace {

boost::shared_ptr<ImageOutputData> sharedImage(const std::string& identifier) {
    return boost::shared_ptr<ImageOutputData>(new ImageOutputData(smallImage(identifier)));
}

}  // namespace

TEST(ImageCollectionOutputData, EmptyCollectionEncodesFlagCountAndNoSubRecords) {
    EXPECT_EQ(encode(ImageCollectionOutputData()),
              (Bytes{0x1E, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00}));
}

TEST(ImageCollectionOutputData, AddsFindsAndRemovesImagesByIdentifier) {
    ImageCollectionOutputData images;
    const auto left = sharedImage("left");
    const auto right = sharedImage("right");
    EXPECT_TRUE(images.addImage(left));
    EXPECT_TRUE(images.addImage(right));
    EXPECT_EQ(images.numImages(), 2);
    EXPECT_EQ(images.image(1), right);  // shared, not copied
    EXPECT_EQ(images.findImageIndex("right"), 1);
    EXPECT_EQ(images.findImageIndex("middle"), -1);

    const Bytes before = encode(images);
    EXPECT_USAGE_ERROR(images.addImage(sharedImage("left")), "imagecollectionoutputdata",
                       "image already added");
    EXPECT_USAGE_ERROR(images.addImage(nullptr), "imagecollectionoutputdata",
                       "no image provided");
    EXPECT_USAGE_ERROR(images.image(2), "imagecollectionoutputdata", "index out of bounds");
    EXPECT_EQ(encode(images), before);
    const ImageCollectionOutputData& const_images = images;
    EXPECT_EQ(const_images.image(2), nullptr);

    EXPECT_FALSE(images.removeImage("middle"));
    EXPECT_FALSE(images.removeImage(boost::shared_ptr<ImageOutputData>()));
    EXPECT_TRUE(images.removeImage(sharedImage("left")));  // by identifier
    EXPECT_EQ(images.numImages(), 1);
    EXPECT_EQ(images.findImageIndex("right"), 0);
    EXPECT_TRUE(images.removeImage("right"));
    EXPECT_EQ(images.numImages(), 0);

    images.addImage(left);
    images.clear();
    EXPECT_EQ(images.numImages(), 0);
}

TEST(ImageCollectionOutputData, RoundTripsAndCopiesDeeply) {
    ImageCollectionOutputData images;
    images.addImage(sharedImage("left"));
    unsigned char* frame = ImageOutputData::rawDataAlloc(6);
    std::memset(frame, 0x55, 6);
    const auto shared = sharedImage("right");
    shared->shareNewImage(6, 1, 6, frame, 9);
    images.addImage(shared);
    const Bytes bytes = encode(images);
    EXPECT_EQ(images.numOwnDataBytes(),
              1 + 2 + images.image(0)->numTotalBytes() + images.image(1)->numTotalBytes());

    ImageCollectionOutputData read;
    read.addImage(sharedImage("old"));
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    const auto made = eodtest::decodeViaFactory<ImageCollectionOutputData>(bytes);
    ASSERT_TRUE(made);
    const ImageCollectionOutputData copy(images);
    for (const ImageCollectionOutputData* c :
         std::initializer_list<const ImageCollectionOutputData*>{&read, made.get(), &copy}) {
        ASSERT_EQ(c->numImages(), 2);
        for (unsigned int i = 0; i < 2; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NE(c->image(i).get(), images.image(i).get());
            EXPECT_FALSE(c->image(i)->isSharingMemory());
            expectSameImage(*c->image(i), *images.image(i));
        }
        EXPECT_EQ(encode(*c), bytes);
    }
    images.clear();
    ImageOutputData::rawDataFree(frame);
}

TEST(ImageCollectionOutputData, HostileCountIsRejected) {
    // A count of 65535 followed by a single image: nothing is reserved up front.
    const Bytes one = encode(smallImage("a"));
    const Bytes bytes = eodtest::engineRecordBytes(ImageCollectionOutputData::THIS_OBJECT_ID,
                                                   eodtest::concat({{0xFF, 0xFF}, one}));
    ImageCollectionOutputData read;
    int pos = 0;
    EXPECT_THROW(read.unSerialize(bytes, pos), SerializableError);
}

// A shared image renamed after addImage gives a collection with a repeated identifier; the
// collection, its copies and the frame that holds it are written and read back whole.
TEST(ImageCollectionOutputData, RepeatedIdentifierFromARenameReadsBack) {
    const boost::shared_ptr<ImageCollectionOutputData> images(new ImageCollectionOutputData());
    images->addImage(sharedImage("a"));
    const auto renamed = sharedImage("b");
    images->addImage(renamed);
    renamed->setImageIdentifier("a");
    const boost::shared_ptr<ImageCollectionOutputData> cloned(images->clone());
    EngineOutputData frame;
    frame.setFrameNum(12);
    frame.addSubObject(images);

    for (const ImageCollectionOutputData* c : {images.get(), cloned.get()}) {
        const auto read = eodtest::decodeViaFactory<ImageCollectionOutputData>(encode(*c));
        ASSERT_TRUE(read);
        ASSERT_EQ(read->numImages(), 2);
        EXPECT_EQ(read->image(1)->imageIdentifier(), "a");
        EXPECT_EQ(read->findImageIndex("a"), 0);  // the first of equal names
    }
    const auto read_frame = eodtest::decodeViaFactory<EngineOutputData>(encode(frame));
    ASSERT_TRUE(read_frame);
    EXPECT_EQ(read_frame->frameNum(), 12u);
    EXPECT_TRUE(read_frame->hasSubObjectID(ImageCollectionOutputData::THIS_OBJECT_ID));
}

TEST(ImageCollectionOutputData, EveryTruncationIsRejected) {
    ImageCollectionOutputData images;
    images.addImage(sharedImage("left"));
    images.addImage(sharedImage("right"));
    eodtest::expectEveryTruncationRejected(encode(images));
}

TEST(ImageCollectionOutputData, PrintsTheNumberOfImages) {
    ImageCollectionOutputData images;
    images.addImage(sharedImage("a"));
    EXPECT_EQ(eodtest::headerLine(images), "NUM_IMAGES");
    EXPECT_EQ(eodtest::valueLine(images), "1");
}
