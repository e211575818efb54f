#ifndef EOD_STREAMRECORD_H
#define EOD_STREAMRECORD_H

#include <istream>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/serializable.h>

namespace tq {
namespace eod {
namespace detail {

// SerializableFactory::newObjectWithStatus(stream, status), collecting the record's bytes in
// `bytes` on the way. A reader of many records passes the same vector every time, so that
// reading a file does not allocate a buffer for each record.
boost::shared_ptr<Serializable> newObjectWithStatus(std::istream& stream, unsigned int& status,
                                                    std::vector<unsigned char>& bytes);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
