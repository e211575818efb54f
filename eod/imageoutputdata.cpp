#include <eod/imageoutputdata.h>

#include <cassert>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

#include <eod/serializableerror.h>

#include "eod/detail/alignedalloc.h"
#include "eod/detail/bytecodec.h"
#include "eod/detail/setterchecks.h"
#include "eod/detail/textcolumns.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

// Sizes are 64-bit here: the product of two 32-bit fields overflows 32 bits.
std::uint64_t rawDataSize(unsigned int height, unsigned int bytes_per_line) {
    return std::uint64_t(height) * bytes_per_line;
}

// rawDataAlloc takes an int, so no image may be larger.
const std::uint64_t MAX_RAW_DATA_SIZE = INT_MAX;

}  // namespace

ImageOutputData::ImageOutputData(const ImageOutputData& other) : Serializable(other) {
    copyFrom(other);
}

ImageOutputData& ImageOutputData::operator=(const ImageOutputData& rhs) {
    Serializable::operator=(rhs);
    copyFrom(rhs);
    return *this;
}

ImageOutputData::~ImageOutputData() { releaseRawData(); }

void ImageOutputData::copyFrom(const ImageOutputData& other) {
    assert(this != &other);
    setNewImage(other._width, other._height, other._bytes_per_line, other._raw_data,
                other._image_format);
    _image_identifier = other._image_identifier;
}

unsigned int ImageOutputData::numDataBytes() const {
    return 17 + static_cast<unsigned int>(_image_identifier.size()) +
           static_cast<unsigned int>(rawDataSize(_height, _bytes_per_line));
}

ImageOutputData* ImageOutputData::clone() const { return new ImageOutputData(*this); }

void ImageOutputData::printLine(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << _width << _height << _bytes_per_line << _image_identifier
                        << _image_format;
}

void ImageOutputData::printHeader(std::ostream& os) const {
    detail::TextLine line(os);
    detail::Columns(os) << "WIDTH" << "HEIGHT" << "BYTES_PER_LINE" << "IMAGE_IDENTIFIER"
                        << "IMAGE_FORMAT";
}

void ImageOutputData::setImageIdentifier(const std::string& identifier) {
    EOD_REQUIRE(detail::hasNoNul(identifier), "image_identifier contains a NUL character");
    _image_identifier = identifier;
}

std::size_t ImageOutputData::checkedRawDataSize(unsigned int height, unsigned int bytes_per_line,
                                                const unsigned char* data) {
    const std::uint64_t size = rawDataSize(height, bytes_per_line);
    EOD_REQUIRE(size <= MAX_RAW_DATA_SIZE, "image too large");
    EOD_REQUIRE(size == 0 || data != nullptr, "raw_data is NULL");
    return static_cast<std::size_t>(size);
}

void ImageOutputData::setNewImage(unsigned int width, unsigned int height,
                                  unsigned int bytes_per_line, const unsigned char* data,
                                  int format) {
    const std::size_t size = checkedRawDataSize(height, bytes_per_line, data);
    unsigned char* copy = rawDataAlloc(static_cast<int>(size));
    if (size > 0) std::memcpy(copy, data, size);
    // Released only after the copy: data may point into the old buffer.
    replaceImage(copy, false, width, height, bytes_per_line, format);
}

void ImageOutputData::shareNewImage(unsigned int width, unsigned int height,
                                    unsigned int bytes_per_line, unsigned char* data, int format) {
    EOD_REQUIRE(reinterpret_cast<std::uintptr_t>(data) % RAW_DATA_ALIGNMENT == 0,
                "raw_data is not aligned correctly");
    checkedRawDataSize(height, bytes_per_line, data);
    // Sharing our own buffer would leave nobody to free it.
    EOD_REQUIRE(data == nullptr || data != _raw_data || _sharing_memory,
                "raw_data is already owned by this image");
    replaceImage(data, true, width, height, bytes_per_line, format);
}

void ImageOutputData::freeRawData() { replaceImage(nullptr, false, 0, 0, 0, _image_format); }

void ImageOutputData::releaseRawData() {
    if (!_sharing_memory) rawDataFree(_raw_data);
}

void ImageOutputData::replaceImage(unsigned char* data, bool sharing, unsigned int width,
                                   unsigned int height, unsigned int bytes_per_line, int format) {
    releaseRawData();
    _raw_data = data;
    _sharing_memory = sharing;
    _width = width;
    _height = height;
    _bytes_per_line = bytes_per_line;
    _image_format = format;
}

unsigned char* ImageOutputData::rawDataAlloc(int size) {
    EOD_REQUIRE(size >= 0, "size is negative");
    if (size == 0) return nullptr;
    void* p = detail::alignedAlloc(static_cast<std::size_t>(size), RAW_DATA_ALIGNMENT);
    if (p == nullptr) throw std::bad_alloc();
    return static_cast<unsigned char*>(p);
}

void ImageOutputData::rawDataFree(unsigned char* raw_data) { detail::alignedFree(raw_data); }

void ImageOutputData::appendBuffer(std::vector<unsigned char>& buffer) const {
    detail::appendNumber(buffer, _width);
    detail::appendNumber(buffer, _height);
    detail::appendNumber(buffer, _bytes_per_line);
    detail::appendString(buffer, _image_identifier);
    detail::appendNumber(buffer, _image_format);
    detail::appendRaw(buffer, _raw_data, rawDataSize(_height, _bytes_per_line));
}

void ImageOutputData::readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) {
    freeRawData();
    _image_format = 0;
    _image_identifier.clear();

    const unsigned int width = detail::readNumber<unsigned int>(buffer, read_pos);
    const unsigned int height = detail::readNumber<unsigned int>(buffer, read_pos);
    const unsigned int bytes_per_line = detail::readNumber<unsigned int>(buffer, read_pos);
    std::string identifier = detail::readString(buffer, read_pos);
    const int format = detail::readNumber<int>(buffer, read_pos);

    const std::uint64_t size = rawDataSize(height, bytes_per_line);
    if (size > detail::bytesRemaining(buffer, read_pos) || size > MAX_RAW_DATA_SIZE) {
        throw SerializableError(
            "ImageOutputData::readFromBuffer() - image size exceeds amount of data in buffer");
    }
    unsigned char* raw_data = rawDataAlloc(static_cast<int>(size));
    detail::readRaw(buffer, read_pos, raw_data, static_cast<std::size_t>(size));

    replaceImage(raw_data, false, width, height, bytes_per_line, format);
    _image_identifier.swap(identifier);
}

}  // namespace eod
}  // namespace tq
