#ifndef EOD_IMAGEOUTPUTDATA_H
#define EOD_IMAGEOUTPUTDATA_H

// One camera or texture image. A plain record (not an engine output record: no flag byte,
// no sub-records). Data bytes:
//
//   width           4 bytes, unsigned
//   height          4 bytes, unsigned
//   bytes per line  4 bytes, unsigned
//   identifier      terminated string
//   image format    4 bytes, signed; a pixel format code that this library does not interpret
//   raw data        height x bytes-per-line bytes as they stand
//
// The raw data is always height x bytes-per-line bytes (width is informational), held in a
// 32-byte aligned buffer that the record either owns or shares with the caller.

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include <eod/serializable.h>

namespace tq {
namespace eod {

class ImageOutputData : public Serializable {
public:
    static constexpr char THIS_OBJECT_ID = 31;
    static constexpr char IMAGE_OUTPUT_DATA_ID = 31;
    static constexpr std::size_t RAW_DATA_ALIGNMENT = 32;

    ImageOutputData() = default;
    // Deep copies: the copy owns its raw data even when the original shares its buffer.
    ImageOutputData(const ImageOutputData& other);
    ImageOutputData& operator=(const ImageOutputData& rhs);
    ~ImageOutputData() override;
    // Copying an image onto itself is a programming error.
    void copyFrom(const ImageOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    unsigned int numDataBytes() const override;
    ImageOutputData* clone() const override;
    // Columns "WIDTH", "HEIGHT", "BYTES_PER_LINE", "IMAGE_IDENTIFIER", "IMAGE_FORMAT"; never
    // the pixels.
    void printLine(std::ostream& os) const override;
    void printHeader(std::ostream& os) const override;

    unsigned int width() const { return _width; }
    unsigned int height() const { return _height; }
    unsigned int bytesPerLine() const { return _bytes_per_line; }
    int imageFormat() const { return _image_format; }
    std::string imageIdentifier() const { return _image_identifier; }
    // Identifiers are unique within a collection: rename an image before adding it to one.
    // Usage error "image_identifier contains a NUL character": it could not read back.
    void setImageIdentifier(const std::string& identifier);
    // height() * bytesPerLine() bytes, or null when that is 0.
    const unsigned char* rawData() const { return _raw_data; }
    unsigned char* rawData() { return _raw_data; }
    // True while the raw data belongs to the caller of shareNewImage.
    bool isSharingMemory() const { return _sharing_memory; }

    // Copies height x bytes_per_line bytes from data into a new owned buffer (none when the
    // size is 0), then releases the previous raw data, so data may point into this image's
    // own buffer. Usage errors: a size above INT_MAX bytes ("image too large"), null data
    // for a non-zero size ("raw_data is NULL"); the image is then unchanged.
    void setNewImage(unsigned int width, unsigned int height, unsigned int bytes_per_line,
                     const unsigned char* data, int format);
    // Keeps the caller's buffer without copying; the caller keeps it alive and frees it.
    // Usage errors, the image unchanged: an address that is not a multiple of 32 ("raw_data is
    // not aligned correctly"), the size and null checks of setNewImage, and this image's own
    // buffer ("raw_data is already owned by this image").
    void shareNewImage(unsigned int width, unsigned int height, unsigned int bytes_per_line,
                       unsigned char* data, int format);
    // Releases owned raw data (shared data is only forgotten) and clears the sharing flag.
    // Width, height and bytes per line become 0, so the raw data size stays height x
    // bytes-per-line; the identifier and format are kept.
    void freeRawData();

    // A 32-byte aligned buffer of size bytes (null for 0) for raw data, to be released with
    // rawDataFree. Throws std::bad_alloc when the heap refuses; a negative size is a usage
    // error ("size is negative").
    static unsigned char* rawDataAlloc(int size);
    // Releases a buffer from rawDataAlloc; ignores null.
    static void rawDataFree(unsigned char* raw_data);

protected:
    void appendBuffer(std::vector<unsigned char>& buffer) const override;
    // Releases the old raw data and resets every field first, so a failed read leaves an
    // empty image. The raw data size is checked against the bytes present before anything
    // is allocated.
    void readFromBuffer(const std::vector<unsigned char>& buffer, int& read_pos) override;

private:
    // Usage errors of setNewImage and shareNewImage; returns the raw data size.
    static std::size_t checkedRawDataSize(unsigned int height, unsigned int bytes_per_line,
                                          const unsigned char* data);
    void releaseRawData();
    // Releases the pixels held so far and takes `data` (owned, or shared when `sharing`) as
    // the image of the given geometry and format.
    void replaceImage(unsigned char* data, bool sharing, unsigned int width, unsigned int height,
                      unsigned int bytes_per_line, int format);

    unsigned int _width = 0;
    unsigned int _height = 0;
    unsigned int _bytes_per_line = 0;
    int _image_format = 0;
    std::string _image_identifier;
    unsigned char* _raw_data = nullptr;
    bool _sharing_memory = false;
};

}  // namespace eod
}  // namespace tq

#endif
