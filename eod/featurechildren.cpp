#include "eod/featurechildren.h"

#include <string>
#include <typeinfo>

#include <eod/featurepoint.h>
#include <eod/featurerect.h>
#include <eod/featureset.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include "eod/bytecodec.h"

namespace tq {
namespace eod {
namespace detail {

namespace {

const unsigned int kFailed =
    Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE;

unsigned int readCount(const std::vector<unsigned char>& buffer, int& read_pos) {
    if (bytesRemaining(buffer, read_pos) < 1) {
        throw SerializableError(
            "SerializableComposite::readFromBuffer() - data_size in header wrong, too much data "
            "read.");
    }
    return readNumber<unsigned char>(buffer, read_pos);
}

// The library feature whose record starts at read_pos, still empty; null when the id there
// is not one of them (or nothing is left to read).
boost::shared_ptr<Serializable> libraryFeatureAt(const std::vector<unsigned char>& buffer,
                                                 int read_pos) {
    if (bytesRemaining(buffer, read_pos) < 1) return boost::shared_ptr<Serializable>();
    return newLibraryFeature(static_cast<char>(buffer[static_cast<std::size_t>(read_pos)]));
}

// A truncated child reads as it does through the factory, so callers see the same failure
// whichever of the two built the child.
boost::shared_ptr<Serializable> readChild(const std::vector<unsigned char>& buffer,
                                          int& read_pos) {
    const boost::shared_ptr<Serializable> feature = libraryFeatureAt(buffer, read_pos);
    if (!feature) return SerializableFactory::newObject(buffer, read_pos);
    if (!feature->unSerialize(buffer, read_pos)) {
        throw SerializableError("SerializableFactory::newObject - insufficient data in buffer");
    }
    return feature;
}

boost::shared_ptr<Serializable> readChildWithStatus(const std::vector<unsigned char>& buffer,
                                                    int& read_pos, unsigned int& status) {
    const boost::shared_ptr<Serializable> feature = libraryFeatureAt(buffer, read_pos);
    if (!feature) return SerializableFactory::newObjectWithStatus(buffer, read_pos, status);
    feature->unSerializeWithStatus(buffer, read_pos, status);
    return status & kFailed ? boost::shared_ptr<Serializable>() : feature;
}

// As the composite stores what it reads: records switched off are dropped.
void store(SerializableComposite& parent, const boost::shared_ptr<Serializable>& child) {
    if (child && child->serializeEnabled()) parent.insertSubObject(child);
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

void readFeatureChildren(SerializableComposite& parent, const std::vector<unsigned char>& buffer,
                         int& read_pos) {
    const unsigned int count = readCount(buffer, read_pos);
    for (unsigned int i = 0; i < count; ++i) store(parent, readChild(buffer, read_pos));
}

void readFeatureChildrenWithStatus(SerializableComposite& parent,
                                   const std::vector<unsigned char>& buffer, int& read_pos,
                                   unsigned int& status) {
    try {
        const unsigned int count = readCount(buffer, read_pos);
        for (unsigned int i = 0; i < count; ++i) {
            unsigned int child_status = 0;
            const boost::shared_ptr<Serializable> child =
                readChildWithStatus(buffer, read_pos, child_status);
            status |= child_status;
            // A child cut short or undecodable leaves read_pos where it was; reading on
            // would only meet the same bytes again.
            if (child_status & kFailed) return;
            store(parent, child);
        }
    } catch (...) {
        status |= Serializable::STATUS_UNDECODABLE;
    }
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
