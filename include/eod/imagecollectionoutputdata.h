#ifndef EOD_IMAGECOLLECTIONOUTPUTDATA_H
#define EOD_IMAGECOLLECTIONOUTPUTDATA_H

// The images of one frame, in the order they were added, keyed by their identifiers (unique
// within the collection). Engine-specific data: the number of images (2 bytes, unsigned),
// then each image as a complete ImageOutputData record (header and data).

#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputbase.h>
#include <eod/imageoutputdata.h>

namespace tq {
namespace eod {

class ImageCollectionOutputData : public EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = 30;
    static constexpr char IMAGE_COLLECTION_OUTPUT_DATA_ID = 30;
    static constexpr unsigned int MAX_IMAGES = 65535;

    ImageCollectionOutputData() = default;
    // Deep copies: every image is copied (and owns its raw data).
    ImageCollectionOutputData(const ImageCollectionOutputData& other);
    ImageCollectionOutputData& operator=(const ImageCollectionOutputData& other);
    ~ImageCollectionOutputData() override;
    void copyFrom(const ImageCollectionOutputData& other);

    char objectID() const override { return THIS_OBJECT_ID; }
    ImageCollectionOutputData* clone() const override;

    unsigned short numImages() const { return static_cast<unsigned short>(_images.size()); }
    // Usage error "index out of bounds" for index >= numImages().
    boost::shared_ptr<ImageOutputData> image(unsigned int index);
    // Null for index >= numImages().
    boost::shared_ptr<ImageOutputData const> image(unsigned int index) const;
    // Index of the image with this identifier, or -1.
    int findImageIndex(const std::string& identifier) const;

    // Shares (does not copy) the image and returns true. Usage errors, the collection
    // unchanged: null ("no image provided"), an identifier already present ("image already
    // added"), a 65536th image ("too many images"). Renaming an image after adding it
    // bypasses the identifier check; such a collection (and its copies) is still written
    // and read back whole, and look-up by identifier finds the first of equal names.
    bool addImage(const boost::shared_ptr<ImageOutputData>& image);
    // Remove the image with the identifier (of the given image); false if there is none.
    bool removeImage(const std::string& identifier);
    bool removeImage(const boost::shared_ptr<ImageOutputData>& image);
    void clear() { _images.clear(); }

    // One column, "NUM_IMAGES".
    void printOwnHeader(std::ostream& os) const override;
    void printOwnData(std::ostream& os) const override;

protected:
    void appendEngineSpecificData(std::vector<unsigned char>& buffer) const override;
    // Clears the collection first and keeps every image in the order read, repeated
    // identifiers included. An image cut short and fewer images than the count announces
    // throw SerializableError; the collection then holds the images read so far.
    void readEngineSpecificData(const std::vector<unsigned char>& buffer, int& read_pos) override;
    unsigned int numEngineSpecificDataBytes() const override;

private:
    std::vector<boost::shared_ptr<ImageOutputData>> _images;
};

}  // namespace eod
}  // namespace tq

#endif
