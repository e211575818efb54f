#ifndef EOD_DETAIL_STREAMRECORD_H
#define EOD_DETAIL_STREAMRECORD_H

#include <cstdint>
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

// A record that newObjectWithStatus left unread for its size; all zero when there was none.
struct RefusedRecord {
    unsigned int header_bytes = 0;
    std::uint64_t data_bytes = 0;
};

// As above, but a record of a registered id whose header and data together take more than
// max_record_size bytes is not read: null is returned with status unchanged, the stream is
// left after the record's header, and `refused` describes the record.
boost::shared_ptr<Serializable> newObjectWithStatus(std::istream& stream, unsigned int& status,
                                                    std::vector<unsigned char>& bytes,
                                                    std::uint64_t max_record_size,
                                                    RefusedRecord& refused);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
