#ifndef EOD_IO_DECODERDATA_H
#define EOD_IO_DECODERDATA_H

#include <eod/serializable.h>

#include <boost/shared_ptr.hpp>

namespace tq {
namespace eod {
namespace io {

// One item out of a SerializableCompressorDecoder: the caller's tag given to the encoder
// with the record, and the record rebuilt through SerializableFactory. `record` is null
// for an empty item and for a record whose object id is not registered.
struct DecoderData {
    unsigned int tag = 0;
    boost::shared_ptr<Serializable> record;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
