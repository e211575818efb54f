#ifndef EOD_DETAIL_BYTECODEC_H
#define EOD_DETAIL_BYTECODEC_H

// The one place that turns numbers into bytes and back. Everything on the wire is
// big-endian (network order); floats and doubles travel as their IEEE-754 bit patterns.
// Appends go to the end of a byte vector; reads are bounds-checked and advance an int
// read position. Values are copied with memcpy, never through a cast onto the buffer,
// because after a one-byte object id every field is unaligned.

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/endian/conversion.hpp>

namespace tq {
namespace eod {
namespace detail {

using Bytes = std::vector<unsigned char>;

inline void appendU8(Bytes& out, std::uint8_t v) { out.push_back(v); }

inline void appendU16(Bytes& out, std::uint16_t v) {
    const unsigned char b[2] = {static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
    out.insert(out.end(), b, b + 2);
}

inline void appendU32(Bytes& out, std::uint32_t v) {
    const unsigned char b[4] = {static_cast<unsigned char>(v >> 24),
                                static_cast<unsigned char>(v >> 16),
                                static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
    out.insert(out.end(), b, b + 4);
}

// High 32-bit half first, each half most significant byte first.
inline void appendU64(Bytes& out, std::uint64_t v) {
    appendU32(out, static_cast<std::uint32_t>(v >> 32));
    appendU32(out, static_cast<std::uint32_t>(v));
}

// Overwrite bytes already in a buffer, for size fields filled in after the data. Boost.Endian
// does the byte order: one swapped store or load, where shifts byte by byte were not always
// merged by the compiler.
inline void storeU16(unsigned char* p, std::uint16_t v) { boost::endian::store_big_u16(p, v); }

inline void storeU32(unsigned char* p, std::uint32_t v) { boost::endian::store_big_u32(p, v); }

inline std::uint16_t loadU16(const unsigned char* p) { return boost::endian::load_big_u16(p); }

inline std::uint32_t loadU32(const unsigned char* p) { return boost::endian::load_big_u32(p); }

inline std::uint64_t loadU64(const unsigned char* p) {
    return (std::uint64_t(loadU32(p)) << 32) | loadU32(p + 4);
}

// Little-endian 32-bit values, least significant byte first. Only the frame that the zlib
// record stream puts around each record uses them; records themselves stay big-endian.
inline void storeU32LE(unsigned char* p, std::uint32_t v) {
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

inline void appendU32LE(Bytes& out, std::uint32_t v) {
    unsigned char b[4];
    storeU32LE(b, v);
    out.insert(out.end(), b, b + 4);
}

inline std::uint32_t loadU32LE(const unsigned char* p) {
    return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}

// Throws what checkReadPos promises for a position it refused.
[[noreturn]] void rejectReadPos(int read_pos);

// Read positions are ints: in a buffer over 2 GiB the bytes from INT_MAX on cannot be
// reached, and every check below treats the buffer as ending there. So no position ever
// passes INT_MAX and turns negative; such bytes read as missing (a library error or status
// bit 4), never as a negative position.
inline std::size_t readableSize(const Bytes& buffer) {
    return std::min<std::size_t>(buffer.size(), static_cast<std::size_t>(INT_MAX));
}

// Throws std::invalid_argument for a negative position and SerializableError
// "Serializable::checkReadPos() - Attempt to read past end of buffer." when fewer than
// num_bytes bytes remain. Inline, since every field read goes through it; the widening
// keeps a position near INT_MAX from wrapping round.
inline void checkReadPos(const Bytes& buffer, int read_pos, int num_bytes) {
    assert(num_bytes > 0);
    if (read_pos < 0 ||
        static_cast<long long>(read_pos) + num_bytes >
            static_cast<long long>(readableSize(buffer))) {
        rejectReadPos(read_pos);
    }
}

// Bytes left after read_pos (0 when read_pos is at or past the end); read_pos must be >= 0.
inline std::size_t bytesRemaining(const Bytes& buffer, int read_pos) {
    const std::size_t pos = static_cast<std::size_t>(read_pos);
    const std::size_t size = readableSize(buffer);
    return pos < size ? size - pos : 0;
}

template <std::size_t N>
struct UnsignedOfSize;
template <>
struct UnsignedOfSize<1> { using type = std::uint8_t; };
template <>
struct UnsignedOfSize<2> { using type = std::uint16_t; };
template <>
struct UnsignedOfSize<4> { using type = std::uint32_t; };
template <>
struct UnsignedOfSize<8> { using type = std::uint64_t; };

// Any arithmetic value by its size: 1, 2, 4 or 8 bytes. bool is handled by the callers
// (one byte, 0 or 1 on writing, non-zero is true on reading).
template <class T>
void appendNumber(Bytes& out, T value) {
    static_assert(std::is_arithmetic<T>::value, "numbers only");
    using U = typename UnsignedOfSize<sizeof(T)>::type;
    U bits;
    std::memcpy(&bits, &value, sizeof bits);
    if constexpr (sizeof(T) == 1) {
        appendU8(out, bits);
    } else if constexpr (sizeof(T) == 2) {
        appendU16(out, bits);
    } else if constexpr (sizeof(T) == 4) {
        appendU32(out, bits);
    } else {
        appendU64(out, bits);
    }
}

// As appendNumber, into room already made in a buffer; returns the byte after the value.
template <class T>
unsigned char* storeNumber(unsigned char* p, T value) {
    static_assert(std::is_arithmetic<T>::value, "numbers only");
    using U = typename UnsignedOfSize<sizeof(T)>::type;
    U bits;
    std::memcpy(&bits, &value, sizeof bits);
    if constexpr (sizeof(T) == 1) {
        p[0] = bits;
    } else if constexpr (sizeof(T) == 2) {
        storeU16(p, bits);
    } else if constexpr (sizeof(T) == 4) {
        storeU32(p, bits);
    } else {
        storeU32(p, static_cast<std::uint32_t>(bits >> 32));
        storeU32(p + 4, static_cast<std::uint32_t>(bits));
    }
    return p + sizeof(T);
}

template <class T>
T readNumber(const Bytes& buffer, int& read_pos) {
    static_assert(std::is_arithmetic<T>::value, "numbers only");
    using U = typename UnsignedOfSize<sizeof(T)>::type;
    U bits;
    if constexpr (sizeof(T) == 8) {
        // Read as two 4-byte numbers, high half first, each checked on its own: when only
        // the high half is there it is consumed and the position stays after it.
        const std::uint64_t high = readNumber<std::uint32_t>(buffer, read_pos);
        bits = (high << 32) | readNumber<std::uint32_t>(buffer, read_pos);
    } else {
        checkReadPos(buffer, read_pos, static_cast<int>(sizeof(T)));
        const unsigned char* p = buffer.data() + read_pos;
        if constexpr (sizeof(T) == 1) {
            bits = p[0];
        } else if constexpr (sizeof(T) == 2) {
            bits = loadU16(p);
        } else {
            bits = loadU32(p);
        }
        read_pos += static_cast<int>(sizeof(T));
    }
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline void appendBool(Bytes& out, bool value) { appendU8(out, value ? 1 : 0); }

inline bool readBool(const Bytes& buffer, int& read_pos) {
    return readNumber<std::uint8_t>(buffer, read_pos) != 0;
}

// A terminated string: its bytes and one 0x00.
inline void appendString(Bytes& out, const std::string& s) {
    out.insert(out.end(), s.begin(), s.end());
    out.push_back(0);
}

// Throws SerializableError "Serializable::readBuffer() - Missing terminator for string."
// when no 0x00 follows before the end of the buffer.
std::string readString(const Bytes& buffer, int& read_pos);

inline void appendRaw(Bytes& out, const void* data, std::size_t n) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    out.insert(out.end(), p, p + n);
}

// Copies n bytes after checking they are present.
void readRaw(const Bytes& buffer, int& read_pos, void* dest, std::size_t n);

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
