#include <eod/serializablefactory.h>
#include <eod/recordsize.h>

#include <algorithm>
#include <array>
#include <map>
#include <sstream>
#include <string>
#include <typeinfo>

#include <boost/core/demangle.hpp>

#include <eod/serializableerror.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/startupregistrations.h"
#include "eod/detail/streamrecord.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

using CreationFunction = SerializableFactory::CreationFunction;

struct Registry {
    // Indexed by the id's byte: every record read looks its id up here, so a plain table
    // rather than a tree (null where nothing is registered).
    std::array<CreationFunction, 256> creation_fns{};
    std::map<char, std::string> id_typename_map;

    CreationFunction& slot(char object_id) {
        return creation_fns[static_cast<unsigned char>(object_id)];
    }
};

CreationFunction addRegistration(Registry& registry, char object_id, CreationFunction creation_fn) {
    if (creation_fn == nullptr) throw SerializableError("The provided creation_fn_ptr is NULL.");
    const boost::shared_ptr<Serializable> sample = creation_fn();
    if (!sample) throw SerializableError("The provided creation function returned a NULL pointer");
    const Serializable& object = *sample;
    const std::string type_name = boost::core::demangle(typeid(object).name());
    if (sample->objectID() != object_id) {
        std::ostringstream msg;
        msg << "The provided object_id (" << int(object_id)
            << ") is different to the objectID() of the registered object ("
            << int(sample->objectID()) << ")";
        throw SerializableError(msg.str());
    }
    const auto known = registry.id_typename_map.find(object_id);
    if (known != registry.id_typename_map.end() && known->second != type_name) {
        std::ostringstream msg;
        msg << "The following object type has already been registered for object_id="
            << int(object_id) << ": " << known->second
            << ". An object type has already been registered for this object_id";
        throw SerializableError(msg.str());
    }
    CreationFunction& slot = registry.slot(object_id);
    const CreationFunction previous = slot;
    slot = creation_fn;
    registry.id_typename_map[object_id] = type_name;
    return previous;
}

Registry makeStartupRegistry() {
    Registry registry;
    for (const detail::StartupRegistration& r : detail::startupRegistrations()) {
        addRegistration(registry, r.object_id, r.create);
    }
    return registry;
}

// Built on first use, so no registration depends on the order of static initialisers.
Registry& registry() {
    static Registry instance = makeStartupRegistry();
    return instance;
}

const unsigned int kFailed =
    Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE;

// Data bytes of a record read from a stream are collected in steps of at most this
// many, so a forged size field cannot make us allocate memory for bytes that never come.
const std::size_t kStreamReadStep = 1 << 20;

enum class StreamRead {
    ok,
    end_of_file,
    id_failed,
    size_failed,
    skip_failed,
    data_failed,
    data_exception,
    unknown_skipped,
    too_large,
};

struct StreamRecord {
    StreamRead outcome = StreamRead::ok;
    boost::shared_ptr<Serializable> object;
    // The size of the record's header as read, and for a record refused as too large the
    // size of its data.
    unsigned int header_bytes = 0;
    std::uint64_t data_bytes = 0;
};

const std::uint64_t kNoLimit = UINT64_MAX;

// Fills `bytes` with the header, rewritten for the id and size, and the data.
// A registered record larger than max_record_size is left unread (outcome too_large).
StreamRecord readStreamRecord(std::istream& stream, unsigned int& status,
                              std::vector<unsigned char>& bytes, std::uint64_t max_record_size) {
    StreamRecord r;
    bytes.clear();
    // A stream whose exceptions() are set throws from the step under way; that step counts
    // as failed, so the status form never throws. on_throw names the step.
    StreamRead on_throw = StreamRead::end_of_file;
    try {
        if (stream.peek() == std::char_traits<char>::eof()) {
            r.outcome = StreamRead::end_of_file;
            return r;
        }
        on_throw = StreamRead::id_failed;
        char id = 0;
        if (!stream.get(id)) {
            r.outcome = StreamRead::id_failed;
            return r;
        }
        on_throw = StreamRead::size_failed;
        unsigned char prefix[7];
        prefix[0] = static_cast<unsigned char>(id);
        if (!stream.read(reinterpret_cast<char*>(prefix + 1), 2)) {
            r.outcome = StreamRead::size_failed;
            return r;
        }
        RecordSize record_size = recordSizeFromPrefix(prefix, 3);
        if (!record_size.known) {
            if (!stream.read(reinterpret_cast<char*>(prefix + 3), 4)) {
                r.outcome = StreamRead::size_failed;
                return r;
            }
            record_size = recordSizeFromPrefix(prefix, 7);
        }
        r.header_bytes = static_cast<unsigned int>(record_size.header_bytes);
        const auto size =
            static_cast<unsigned int>(record_size.total_bytes - record_size.header_bytes);
        unsigned int id_status = 0;
        r.object = SerializableFactory::newObjectWithStatus(id, id_status);
        status |= id_status;
        if (r.object && r.header_bytes + std::uint64_t(size) > max_record_size) {
            // Left to the caller, positioned after the header, without its data read.
            r.object.reset();
            r.outcome = StreamRead::too_large;
            r.data_bytes = size;
            return r;
        }
        if (!r.object) {
            // Running into the end of the stream while skipping is not an error.
            on_throw = StreamRead::skip_failed;
            stream.ignore(static_cast<std::streamsize>(size));
            r.outcome = stream.bad() || (stream.fail() && !stream.eof())
                            ? StreamRead::skip_failed
                            : StreamRead::unknown_skipped;
            return r;
        }
        on_throw = StreamRead::data_exception;
        Serializable::writeHeader(bytes, id, size);
        std::size_t remaining = size;
        while (remaining > 0) {
            const std::size_t step = std::min(remaining, kStreamReadStep);
            const std::size_t old_size = bytes.size();
            bytes.resize(old_size + step);
            stream.read(reinterpret_cast<char*>(bytes.data() + old_size),
                        static_cast<std::streamsize>(step));
            if (static_cast<std::size_t>(stream.gcount()) != step) {
                r.object.reset();
                r.outcome = StreamRead::data_failed;
                return r;
            }
            remaining -= step;
        }
    } catch (...) {
        r.object.reset();
        r.outcome = on_throw == StreamRead::skip_failed && !stream.bad()
                        ? StreamRead::unknown_skipped
                        : on_throw;
    }
    return r;
}

}  // namespace

CreationFunction SerializableFactory::registerObjectType(char object_id,
                                                         CreationFunction creation_fn) {
    return addRegistration(registry(), object_id, creation_fn);
}

CreationFunction SerializableFactory::unregisterObjectType(char object_id) {
    Registry& r = registry();
    const CreationFunction previous = r.slot(object_id);
    r.slot(object_id) = nullptr;
    r.id_typename_map.erase(object_id);
    return previous;
}

std::string SerializableFactory::registeredTypeName(char object_id) {
    const Registry& r = registry();
    const auto known = r.id_typename_map.find(object_id);
    return known == r.id_typename_map.end() ? std::string() : known->second;
}

boost::shared_ptr<Serializable> SerializableFactory::newObject(char object_id) {
    unsigned int status = 0;
    return newObjectWithStatus(object_id, status);
}

boost::shared_ptr<Serializable> SerializableFactory::newObjectWithStatus(char object_id,
                                                                         unsigned int& status) {
    const CreationFunction create = registry().slot(object_id);
    if (create == nullptr) {
        status |= Serializable::STATUS_UNKNOWN_OBJECT_ID;
        return boost::shared_ptr<Serializable>();
    }
    return create();
}

bool SerializableFactory::canDeserialize(const std::vector<unsigned char>& buffer, int read_pos) {
    if (read_pos < 0 || detail::bytesRemaining(buffer, read_pos) < 1) return false;
    int p = read_pos + 1;
    return Serializable::readDataSizeHeader(buffer, p, nullptr);
}

boost::shared_ptr<Serializable> SerializableFactory::newObjectWithStatus(
    const std::vector<unsigned char>& buffer, int& read_pos, unsigned int& status) {
    EOD_REQUIRE(read_pos >= 0, "negative read_pos");
    int p = read_pos + 1;
    unsigned int data_size = 0;
    if (detail::bytesRemaining(buffer, read_pos) < 1 ||
        !Serializable::readDataSizeHeader(buffer, p, &data_size)) {
        status |= Serializable::STATUS_NOT_ENOUGH_DATA;
        return boost::shared_ptr<Serializable>();
    }
    const char id = static_cast<char>(buffer[static_cast<std::size_t>(read_pos)]);
    unsigned int own_status = 0;
    boost::shared_ptr<Serializable> object = newObjectWithStatus(id, own_status);
    if (!object) {
        status |= own_status;
        read_pos = p + static_cast<int>(data_size);
        return object;
    }
    object->unSerializeWithStatus(buffer, read_pos, own_status);
    status |= own_status;
    if (own_status & kFailed) return boost::shared_ptr<Serializable>();
    return object;
}

boost::shared_ptr<Serializable> SerializableFactory::newObject(
    const std::vector<unsigned char>& buffer, int& read_pos) {
    unsigned int status = 0;
    boost::shared_ptr<Serializable> object = newObjectWithStatus(buffer, read_pos, status);
    if (status & Serializable::STATUS_NOT_ENOUGH_DATA) {
        throw SerializableError("SerializableFactory::newObject - insufficient data in buffer");
    }
    if (status & Serializable::STATUS_UNDECODABLE) {
        throw SerializableError("SerializableFactory::newObject - could not unSerialize object");
    }
    return object;
}

boost::shared_ptr<Serializable> SerializableFactory::newObjectWithStatus(std::istream& stream,
                                                                         unsigned int& status) {
    std::vector<unsigned char> bytes;
    return detail::newObjectWithStatus(stream, status, bytes);
}

boost::shared_ptr<Serializable> detail::newObjectWithStatus(std::istream& stream,
                                                            unsigned int& status,
                                                            std::vector<unsigned char>& bytes) {
    RefusedRecord refused;
    return newObjectWithStatus(stream, status, bytes, kNoLimit, refused);
}

boost::shared_ptr<Serializable> detail::newObjectWithStatus(std::istream& stream,
                                                            unsigned int& status,
                                                            std::vector<unsigned char>& bytes,
                                                            std::uint64_t max_record_size,
                                                            RefusedRecord& refused) {
    StreamRecord r = readStreamRecord(stream, status, bytes, max_record_size);
    refused = RefusedRecord();
    if (r.outcome == StreamRead::too_large) {
        refused.header_bytes = r.header_bytes;
        refused.data_bytes = r.data_bytes;
    }
    if (r.outcome == StreamRead::ok) {
        int read_pos = 0;
        unsigned int own_status = 0;
        r.object->unSerializeWithStatus(bytes, read_pos, own_status);
        status |= own_status;
        if (own_status & kFailed) r.object.reset();
    } else if (r.outcome != StreamRead::unknown_skipped && r.outcome != StreamRead::too_large) {
        status |= Serializable::STATUS_NOT_ENOUGH_DATA;
    }
    // Kept for the next record, unless an unusually long one left it large.
    if (bytes.capacity() > kStreamReadStep) std::vector<unsigned char>().swap(bytes);
    return r.object;
}

boost::shared_ptr<Serializable> SerializableFactory::newObject(std::istream& stream) {
    unsigned int status = 0;
    std::vector<unsigned char> bytes;
    StreamRecord r = readStreamRecord(stream, status, bytes, kNoLimit);
    switch (r.outcome) {
        case StreamRead::end_of_file:
            throw SerializableError(
                "SerializableFactory::newObject - End-of-file encountered when trying to read "
                "Serializable object");
        case StreamRead::id_failed:
            throw SerializableError(
                "SerializableFactory::newObject - An error occurred when trying to read object "
                "ID from stream");
        case StreamRead::size_failed:
            throw SerializableError(
                "SerializableFactory::newObject - An error occurred when trying to read object "
                "size from stream");
        case StreamRead::skip_failed:
            throw SerializableError(
                "SerializableFactory::newObject - An error occurred when trying to skip over an "
                "unknown object in the stream");
        case StreamRead::data_failed:
            throw SerializableError(
                "An error occurred when trying to read object data from the stream");
        case StreamRead::data_exception:
            throw SerializableError(
                "An exception occurred when trying to read object data from the stream");
        case StreamRead::unknown_skipped:
        case StreamRead::too_large:  // not with kNoLimit
            return boost::shared_ptr<Serializable>();
        case StreamRead::ok:
            break;
    }
    // The buffer holds the whole record, so a failure here is the record rejecting its bytes.
    int read_pos = 0;
    bool complete = false;
    try {
        complete = r.object->unSerialize(bytes, read_pos);
    } catch (...) {
    }
    if (!complete) {
        throw SerializableError("An error occured when unserializing bytes read from the stream");
    }
    return r.object;
}

}  // namespace eod
}  // namespace tq
