#ifndef EOD_SERIALIZABLEFACTORY_H
#define EOD_SERIALIZABLEFACTORY_H

#include <istream>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/serializable.h>

namespace tq {
namespace eod {

// Maps object ids to creation functions so that a reader meeting an id can build an empty
// record of the right class and let it decode itself. The one process-wide registry comes
// into being on first use with the library's record classes registered; applications may
// add, replace or remove registrations. Not locked: finish registering before threads
// start creating records.
//
// Status bits: 1 unknown object id, 4 not enough data, 8 data could not be decoded.
// An unknown id is never an error: its record is skipped whole and null is returned.
class SerializableFactory {
public:
    typedef boost::shared_ptr<Serializable> (*CreationFunction)();

    SerializableFactory() = delete;

    // Returns the previously registered function (null if none). The creation function is
    // called once; its record must carry object_id (checked for every registration, so the
    // factory never builds a record that would refuse its own id).
    static CreationFunction registerObjectType(char object_id, CreationFunction creation_fn);
    static CreationFunction unregisterObjectType(char object_id);

    static boost::shared_ptr<Serializable> newObject(char object_id);

    // The full class name ("tq::eod::HeadOutputDataV2") of the records registered for an
    // id; empty when none is.
    static std::string registeredTypeName(char object_id);
    static boost::shared_ptr<Serializable> newObjectWithStatus(char object_id,
                                                               unsigned int& status);

    // True when a complete record (header and all announced data) starts at read_pos.
    static bool canDeserialize(const std::vector<unsigned char>& buffer, int read_pos);

    // One record from a buffer; read_pos moves past it on success and past a skipped record
    // of unknown id; it stays put when the record is incomplete (bit 4) or undecodable (8).
    static boost::shared_ptr<Serializable> newObjectWithStatus(
        const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status);
    // Throws SerializableError where the status form would set bit 4 or 8.
    static boost::shared_ptr<Serializable> newObject(const std::vector<unsigned char>& buffer,
                                                     int& read_pos);

    // One record from a binary stream. Memory grows with the bytes actually read, never
    // with the size a header announces.
    static boost::shared_ptr<Serializable> newObjectWithStatus(std::istream& stream,
                                                               unsigned int& status);
    static boost::shared_ptr<Serializable> newObject(std::istream& stream);
};

}  // namespace eod
}  // namespace tq

#endif
