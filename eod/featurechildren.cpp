#include "eod/detail/featurechildren.h"

#include <string>
#include <typeinfo>

#include <eod/featurepoint.h>
#include <eod/featurerect.h>
#include <eod/featureset.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace detail {

namespace {

// The library feature whose record starts at read_pos, still empty; null when the id there
// is not one of them (or nothing is left to read).
boost::shared_ptr<Serializable> libraryFeatureAt(const std::vector<unsigned char>& buffer,
                                                 int read_pos) {
    if (bytesRemaining(buffer, read_pos) < 1) return boost::shared_ptr<Serializable>();
    return newLibraryFeature(static_cast<char>(buffer[static_cast<std::size_t>(read_pos)]));
}

}  // namespace

boost::shared_ptr<Serializable> newLibraryFeature(char object_id) {
    switch (object_id) {
        case FeatureSet::FEATURE_SET_CAM_A_ID:
        case FeatureSet::FEATURE_SET_CAM_B_ID:
            return boost::shared_ptr<Serializable>(new FeatureSet(object_id));
        case FeaturePoint::RIGHT_PUPIL_ID:
        case FeaturePoint::LEFT_PUPIL_ID:
            return boost::shared_ptr<Serializable>(new FeaturePoint(object_id));
        case FeatureRect::FACE_RECT_ID:
        case FeatureRect::RIGHT_EYE_RECT_ID:
        case FeatureRect::LEFT_EYE_RECT_ID:
        case FeatureRect::MOUTH_RECT_ID:
            return boost::shared_ptr<Serializable>(new FeatureRect(object_id));
        default:
            return boost::shared_ptr<Serializable>();
    }
}

void requireRebuildable(const Serializable& record, const char* where) {
    const boost::shared_ptr<Serializable> rebuilt = newLibraryFeature(record.objectID());
    if (!rebuilt) return;
    const Serializable& expected = *rebuilt;
    if (typeid(expected) != typeid(record)) {
        throw SerializableError(std::string(where) +
                                " - object id reserved for another feature class");
    }
}

// A truncated child reads as it does through the factory, so callers see the same failure
// whichever of the two built the child.
boost::shared_ptr<Serializable> readFeatureChild(const std::vector<unsigned char>& buffer,
                                                 int& read_pos) {
    const boost::shared_ptr<Serializable> feature = libraryFeatureAt(buffer, read_pos);
    if (!feature) return SerializableFactory::newObject(buffer, read_pos);
    if (!feature->unSerialize(buffer, read_pos)) {
        throw SerializableError("SerializableFactory::newObject - insufficient data in buffer");
    }
    return feature;
}

boost::shared_ptr<Serializable> readFeatureChildWithStatus(const std::vector<unsigned char>& buffer,
                                                           int& read_pos, unsigned int& status) {
    const boost::shared_ptr<Serializable> feature = libraryFeatureAt(buffer, read_pos);
    if (!feature) return SerializableFactory::newObjectWithStatus(buffer, read_pos, status);
    feature->unSerializeWithStatus(buffer, read_pos, status);
    const unsigned int failed =
        Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE;
    return status & failed ? boost::shared_ptr<Serializable>() : feature;
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
