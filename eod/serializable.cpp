#include <eod/serializable.h>
#include <eod/recordsize.h>

#include <cassert>
#include <cstring>
#include <new>

#include <eod/serializableerror.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {

namespace {

// Records read from bytes nest (a frame holds face sets, which hold eye records, ...).
// Hostile bytes could nest them deeply enough to exhaust the stack; real records nest a
// handful of levels. Touched for every record read: initial-exec makes that a plain load.
__attribute__((tls_model("initial-exec"))) thread_local unsigned int t_nesting_depth = 0;

class NestingGuard {
public:
    NestingGuard() {
        if (++t_nesting_depth > Serializable::MAX_NESTING_DEPTH) {
            --t_nesting_depth;
            throw SerializableError("Serializable::unSerialize() - records nested too deeply.");
        }
    }
    ~NestingGuard() { --t_nesting_depth; }
    NestingGuard(const NestingGuard&) = delete;
    NestingGuard& operator=(const NestingGuard&) = delete;
};

}  // namespace

Serializable::~Serializable() = default;

void* Serializable::operator new(std::size_t size) { return ::operator new(size); }

void* Serializable::operator new(std::size_t size, const char*, int) {
    return ::operator new(size);
}

void Serializable::operator delete(void* p) noexcept { ::operator delete(p); }

void Serializable::operator delete(void* p, const char*, int) noexcept { ::operator delete(p); }

unsigned int Serializable::numTotalBytes() const {
    const unsigned int data_size = numDataBytes();
    return numHeaderBytes(data_size) + data_size;
}

namespace {

// True while the data of a record shorter than 65535 bytes is being written on this thread.
// Its sub-records are then short too and are written without being sized first. It is read
// for every record written; the initial-exec model makes that a plain load instead of a
// call into the dynamic linker (one byte, well within what glibc keeps for it).
__attribute__((tls_model("initial-exec"))) thread_local bool inside_short_record = false;

class ShortRecordScope {
public:
    explicit ShortRecordScope(bool is_short) : _saved(inside_short_record) {
        inside_short_record = is_short;
    }
    ~ShortRecordScope() { inside_short_record = _saved; }
    ShortRecordScope(const ShortRecordScope&) = delete;
    ShortRecordScope& operator=(const ShortRecordScope&) = delete;

private:
    bool _saved;
};

}  // namespace

void Serializable::serialize(std::vector<unsigned char>& buffer) const {
    if (!serializeEnabled()) {
        throw SerializableError("Serializable::serialize() - trying to serialize invalid object.");
    }
    const unsigned int data_size = numDataBytes();
    const std::size_t required = buffer.size() + numHeaderBytes(data_size) + data_size;
    buffer.reserve(required);
    appendRecord(buffer, extendedHeaderSize(data_size));
    assert(buffer.size() == required && "numTotalBytes does not match what has been appended!!");
    (void)required;
}

void Serializable::appendRecord(std::vector<unsigned char>& buffer) const {
    // Sizing a record walks all its sub-records, so sizing at every level would cost each
    // byte once per level of nesting. Only a sub-record of a long record can itself be long.
    appendRecord(buffer, !inside_short_record && extendedHeaderSize(numDataBytes()));
}

void Serializable::appendRecord(std::vector<unsigned char>& buffer, bool long_header) const {
    const std::size_t header_pos = buffer.size();
    detail::appendNumber(buffer, objectID());
    detail::appendU16(buffer, 0);
    if (long_header) detail::appendU32(buffer, 0);
    const std::size_t data_pos = buffer.size();
    {
        const ShortRecordScope scope(!long_header);
        appendBuffer(buffer);
    }
    // The size field is filled in after the data, so a short record is never sized.
    const std::size_t data_size = buffer.size() - data_pos;
    if (long_header) {
        detail::storeU16(&buffer[header_pos + 1],
                         static_cast<std::uint16_t>(extendedHeaderSizeMagicCookie()));
        detail::storeU32(&buffer[data_pos - 4], static_cast<std::uint32_t>(data_size));
    } else if (extendedHeaderSize(static_cast<unsigned int>(data_size))) {
        // Only a record whose numDataBytes() disagrees with what it appends gets here: open
        // up the extended size field behind the data so that the bytes are still valid.
        const unsigned char size_field[4] = {0, 0, 0, 0};
        buffer.insert(buffer.begin() + static_cast<std::ptrdiff_t>(data_pos), size_field,
                      size_field + 4);
        detail::storeU16(&buffer[header_pos + 1],
                         static_cast<std::uint16_t>(extendedHeaderSizeMagicCookie()));
        detail::storeU32(&buffer[data_pos], static_cast<std::uint32_t>(data_size));
    } else {
        detail::storeU16(&buffer[header_pos + 1], static_cast<std::uint16_t>(data_size));
    }
}

void Serializable::writeHeader(std::vector<unsigned char>& buffer, char object_id,
                               unsigned int data_size) {
    detail::appendNumber(buffer, object_id);
    if (extendedHeaderSize(data_size)) {
        detail::appendU16(buffer, static_cast<std::uint16_t>(extendedHeaderSizeMagicCookie()));
        detail::appendU32(buffer, data_size);
    } else {
        detail::appendU16(buffer, static_cast<std::uint16_t>(data_size));
    }
}

bool Serializable::readDataSizeHeader(const std::vector<unsigned char>& buffer, int& read_pos,
                                      unsigned int* data_size) {
    // read_pos is just after the id byte, which the size is read together with.
    if (read_pos < 1 || detail::bytesRemaining(buffer, read_pos) < 2) return false;
    const int id_pos = read_pos - 1;
    const RecordSize size = recordSizeFromPrefix(buffer.data() + id_pos,
                                                 detail::bytesRemaining(buffer, id_pos));
    if (!size.known || detail::bytesRemaining(buffer, id_pos) < size.total_bytes) return false;
    read_pos = id_pos + static_cast<int>(size.header_bytes);
    if (data_size != nullptr) {
        *data_size = static_cast<unsigned int>(size.total_bytes - size.header_bytes);
    }
    return true;
}

bool Serializable::openRecord(const std::vector<unsigned char>& buffer, int& p,
                              unsigned int& data_size) const {
    EOD_REQUIRE(p >= 0, "negative read_pos");
    if (detail::bytesRemaining(buffer, p) < minHeaderBytes()) return false;
    if (static_cast<char>(buffer[static_cast<std::size_t>(p)]) != objectID()) {
        throw SerializableError(
            "Serializable::unSerialize() - objectid in buffer does not match this object.");
    }
    ++p;
    return readDataSizeHeader(buffer, p, &data_size);
}

bool Serializable::unSerialize(const std::vector<unsigned char>& buffer, int& read_pos) {
    int p = read_pos;
    unsigned int data_size = 0;
    if (!openRecord(buffer, p, data_size)) return false;
    const int start = p;
    {
        const NestingGuard nesting;
        readFromBuffer(buffer, p);
    }
    if (static_cast<unsigned int>(p - start) != data_size) {
        throw SerializableError("Serializable::unSerialize() - data_size in header wrong.");
    }
    read_pos = p;
    return true;
}

void Serializable::unSerializeWithStatus(const std::vector<unsigned char>& buffer, int& read_pos,
                                         unsigned int& status) {
    int p = read_pos;
    unsigned int data_size = 0;
    if (!openRecord(buffer, p, data_size)) {
        status |= STATUS_NOT_ENOUGH_DATA;
        return;
    }
    const int start = p;
    unsigned int own_status = 0;
    try {
        const NestingGuard nesting;
        readFromBufferWithStatus(buffer, p, own_status);
    } catch (const SerializableError&) {
        own_status |= STATUS_UNDECODABLE;
    }
    status |= own_status;
    if (own_status & (STATUS_NOT_ENOUGH_DATA | STATUS_UNDECODABLE)) return;
    if (static_cast<unsigned int>(p - start) != data_size) {
        status |= STATUS_UNDECODABLE;
        return;
    }
    read_pos = p;
}

void Serializable::readFromBufferWithStatus(const std::vector<unsigned char>& buffer,
                                            int& read_pos, unsigned int& status) {
    try {
        readFromBuffer(buffer, read_pos);
    } catch (...) {
        status |= STATUS_UNDECODABLE;
    }
}

void Serializable::writeToBinaryStream(std::ostream& stream) const {
    EOD_REQUIRE(stream.good(), "output_stream not valid");
    std::vector<unsigned char> buffer;
    serialize(buffer);
    assert(!buffer.empty());
    assert(buffer.size() == numTotalBytes());
    stream.write(reinterpret_cast<const char*>(buffer.data()),
                 static_cast<std::streamsize>(buffer.size()));
}

void Serializable::appendBuffer(std::vector<unsigned char>& buffer, bool value) {
    detail::appendBool(buffer, value);
}

void Serializable::readBuffer(const std::vector<unsigned char>& buffer, int& read_pos,
                              bool& value) {
    value = detail::readBool(buffer, read_pos);
}

void Serializable::appendBuffer(std::vector<unsigned char>& buffer, const std::string& value) {
    detail::appendString(buffer, value);
}

void Serializable::appendBuffer(std::vector<unsigned char>& buffer, const char* value) {
    detail::appendString(buffer, value);
}

void Serializable::readBuffer(const std::vector<unsigned char>& buffer, int& read_pos,
                              std::string& value) {
    value = detail::readString(buffer, read_pos);
}

void Serializable::appendRawBytes(std::vector<unsigned char>& buffer, const char* bytes,
                                  unsigned int n) {
    detail::appendRaw(buffer, bytes, n);
}

void Serializable::readRawBytes(const std::vector<unsigned char>& buffer, int& read_pos,
                                unsigned char* array, unsigned int n) {
    EOD_REQUIRE(array != nullptr, "array is NULL");
    detail::readRaw(buffer, read_pos, array, n);
}

void Serializable::appendNBytes(std::vector<unsigned char>& buffer, const char* bytes,
                                int num_bytes) {
    switch (num_bytes) {
        case 1: {
            std::uint8_t v;
            std::memcpy(&v, bytes, 1);
            return detail::appendNumber(buffer, v);
        }
        case 2: {
            std::uint16_t v;
            std::memcpy(&v, bytes, 2);
            return detail::appendNumber(buffer, v);
        }
        case 4: {
            std::uint32_t v;
            std::memcpy(&v, bytes, 4);
            return detail::appendNumber(buffer, v);
        }
        case 8: {
            std::uint64_t v;
            std::memcpy(&v, bytes, 8);
            return detail::appendNumber(buffer, v);
        }
        default:
            EOD_USAGE_ERROR("num_bytes should be one of 1, 2, 4 or 8");
    }
}

void Serializable::readNBytes(const std::vector<unsigned char>& buffer, int& read_pos,
                              char* bytes, int num_bytes) {
    switch (num_bytes) {
        case 1: {
            const auto v = detail::readNumber<std::uint8_t>(buffer, read_pos);
            std::memcpy(bytes, &v, 1);
            return;
        }
        case 2: {
            const auto v = detail::readNumber<std::uint16_t>(buffer, read_pos);
            std::memcpy(bytes, &v, 2);
            return;
        }
        case 4: {
            const auto v = detail::readNumber<std::uint32_t>(buffer, read_pos);
            std::memcpy(bytes, &v, 4);
            return;
        }
        case 8: {
            const auto v = detail::readNumber<std::uint64_t>(buffer, read_pos);
            std::memcpy(bytes, &v, 8);
            return;
        }
        default:
            EOD_USAGE_ERROR("num_bytes should be one of 1, 2, 4 or 8");
    }
}

std::ostream& operator<<(std::ostream& os, const Serializable& record) {
    record.printLine(os);
    return os;
}

std::string padString(const std::string& s, int length) {
    const long long missing = static_cast<long long>(length) - static_cast<long long>(s.size());
    if (missing <= 0) return s;
    return std::string(static_cast<std::size_t>(missing), ' ') + s;
}

std::string unPadString(const std::string& s) {
    const std::size_t first = s.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : s.substr(first);
}

}  // namespace eod
}  // namespace tq
