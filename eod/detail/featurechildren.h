#ifndef EOD_DETAIL_FEATURECHILDREN_H
#define EOD_DETAIL_FEATURECHILDREN_H

// The registry does not know the library's feature ids (21 to 28: the feature sets, pupil
// points and rectangles), because a feature's class does not fix its id. The feature
// containers therefore rebuild those children themselves while reading and leave every
// other id to the factory, so registered records still come back and unknown ones are
// still skipped whole.

#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/serializable.h>

namespace tq {
namespace eod {
namespace detail {

// A new empty record for a library feature id: FeatureSet for 21 and 22, FeaturePoint for
// 23 and 24, FeatureRect for 25 to 28; null for any other id.
boost::shared_ptr<Serializable> newLibraryFeature(char object_id);

// Throws SerializableError "<where> - object id reserved for another feature class" when
// the record sits under a library feature id without being of the class rebuilt for that
// id: it could be written but would not read back as itself.
void requireRebuildable(const Serializable& record, const char* where);

// The child of a feature container whose record starts at read_pos, read as the factory
// reads it (same messages, same status bits), except that a child of a library feature id
// is built by newLibraryFeature. The containers' readSubObject hooks.
boost::shared_ptr<Serializable> readFeatureChild(const std::vector<unsigned char>& buffer,
                                                 int& read_pos);
boost::shared_ptr<Serializable> readFeatureChildWithStatus(const std::vector<unsigned char>& buffer,
                                                           int& read_pos, unsigned int& status);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
