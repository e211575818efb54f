#include <eod/imagecollectionoutputdata.h>

#include <eod/serializableerror.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

ImageCollectionOutputData::ImageCollectionOutputData(const ImageCollectionOutputData& other)
    : EngineOutputBase(other) {
    copyFrom(other);
}

ImageCollectionOutputData& ImageCollectionOutputData::operator=(
    const ImageCollectionOutputData& other) {
    if (this != &other) {
        EngineOutputBase::operator=(other);
        copyFrom(other);
    }
    return *this;
}

ImageCollectionOutputData::~ImageCollectionOutputData() = default;

void ImageCollectionOutputData::copyFrom(const ImageCollectionOutputData& other) {
    if (this == &other) return;
    std::vector<boost::shared_ptr<ImageOutputData>> copies;
    copies.reserve(other._images.size());
    for (const auto& image : other._images) copies.emplace_back(new ImageOutputData(*image));
    _images.swap(copies);
}

ImageCollectionOutputData* ImageCollectionOutputData::clone() const {
    return new ImageCollectionOutputData(*this);
}

boost::shared_ptr<ImageOutputData> ImageCollectionOutputData::image(unsigned int index) {
    EOD_REQUIRE(index < _images.size(), "index out of bounds");
    return _images[index];
}

boost::shared_ptr<ImageOutputData const> ImageCollectionOutputData::image(
    unsigned int index) const {
    if (index >= _images.size()) return boost::shared_ptr<ImageOutputData const>();
    return _images[index];
}

int ImageCollectionOutputData::findImageIndex(const std::string& identifier) const {
    for (std::size_t i = 0; i < _images.size(); ++i) {
        if (_images[i]->imageIdentifier() == identifier) return static_cast<int>(i);
    }
    return -1;
}

bool ImageCollectionOutputData::addImage(const boost::shared_ptr<ImageOutputData>& image) {
    EOD_REQUIRE(image != nullptr, "no image provided");
    EOD_REQUIRE(findImageIndex(image->imageIdentifier()) < 0, "image already added");
    EOD_REQUIRE(_images.size() < MAX_IMAGES, "too many images");
    _images.push_back(image);
    return true;
}

bool ImageCollectionOutputData::removeImage(const std::string& identifier) {
    const int index = findImageIndex(identifier);
    if (index < 0) return false;
    _images.erase(_images.begin() + index);
    return true;
}

bool ImageCollectionOutputData::removeImage(const boost::shared_ptr<ImageOutputData>& image) {
    return image && removeImage(image->imageIdentifier());
}

void ImageCollectionOutputData::printOwnHeader(std::ostream& os) const {
    detail::Columns(os) << "NUM_IMAGES";
}

void ImageCollectionOutputData::printOwnData(std::ostream& os) const {
    detail::Columns(os) << numImages();
}

unsigned int ImageCollectionOutputData::numEngineSpecificDataBytes() const {
    unsigned int n = 2;
    for (const auto& image : _images) n += image->numTotalBytes();
    return n;
}

void ImageCollectionOutputData::appendEngineSpecificData(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, numImages());
    for (const auto& image : _images) image->serialize(buffer);
}

void ImageCollectionOutputData::readEngineSpecificData(const std::vector<unsigned char>& buffer,
                                                       int& read_pos) {
    _images.clear();
    const unsigned short count = detail::readNumber<unsigned short>(buffer, read_pos);
    // Nothing is reserved from the count: the images are only as many as the bytes hold.
    // Identifiers are not checked: a collection whose images were renamed after adding them
    // may repeat one, and what a collection writes must read back.
    for (unsigned int i = 0; i < count; ++i) {
        boost::shared_ptr<ImageOutputData> image(new ImageOutputData());
        if (!image->unSerialize(buffer, read_pos)) {
            throw SerializableError(
                "ImageCollectionOutputData::readEngineSpecificData() - image cut short");
        }
        _images.push_back(image);
    }
}

}  // namespace eod
}  // namespace tq
