#ifndef EOD_DETAIL_FIELDCODEC_H
#define EOD_DETAIL_FIELDCODEC_H

// A record lists its wire fields once, in a static member template
//
//     template <class Self, class Visitor>
//     static void visitFields(Self& self, Visitor& v) { v(self._a); v(self._b); ... }
//
// and derives its size, its writer and its reader from that one list with the three
// visitors below, so the three can never drift apart. Vectors are written element by
// element with no count; a reader fills the elements the vector already has, which is
// why records keep their vectors at their fixed sizes.

#include <cassert>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace detail {

struct FieldSizer {
    unsigned int bytes = 0;

    void operator()(bool) { bytes += 1; }
    template <class T>
    std::enable_if_t<std::is_arithmetic<T>::value> operator()(T) {
        bytes += sizeof(T);
    }
    void operator()(const std::string& s) { bytes += static_cast<unsigned int>(s.size()) + 1; }
    template <class T>
    void operator()(const std::vector<T>& v) {
        for (const T& e : v) (*this)(e);
    }
};

struct FieldWriter {
    Bytes& out;

    void operator()(bool v) { appendBool(out, v); }
    template <class T>
    std::enable_if_t<std::is_arithmetic<T>::value> operator()(T v) {
        appendNumber(out, v);
    }
    void operator()(const std::string& s) { appendString(out, s); }
    template <class T>
    void operator()(const std::vector<T>& v) {
        for (const T& e : v) (*this)(e);
    }
};

// FieldWriter's encoding, stored through a pointer into room made beforehand: growing a
// vector field by field costs several times the store itself. See appendFields.
struct FieldStorer {
    unsigned char* p;

    void operator()(bool v) { *p++ = v ? 1 : 0; }
    template <class T>
    std::enable_if_t<std::is_arithmetic<T>::value> operator()(T v) {
        p = storeNumber(p, v);
    }
    void operator()(const std::string& s) {
        std::memcpy(p, s.data(), s.size());
        p += s.size();
        *p++ = 0;
    }
    template <class T>
    void operator()(const std::vector<T>& v) {
        for (const T& e : v) (*this)(e);
    }
};

// Appends fields of exactly `bytes` bytes in all (a FieldSizer's count): the buffer grows
// once, then store(FieldStorer&) writes them in order.
template <class Store>
void appendFields(Bytes& out, std::size_t bytes, Store store) {
    const std::size_t start = out.size();
    out.resize(start + bytes);
    FieldStorer storer{out.data() + start};
    store(storer);
    assert(storer.p == out.data() + out.size() && "fields differ from their size");
}

struct FieldReader {
    const Bytes& in;
    int& read_pos;

    void operator()(bool& v) { v = readBool(in, read_pos); }
    template <class T>
    std::enable_if_t<std::is_arithmetic<T>::value> operator()(T& v) {
        v = readNumber<T>(in, read_pos);
    }
    void operator()(std::string& s) { s = readString(in, read_pos); }
    template <class T>
    void operator()(std::vector<T>& v) {
        for (T& e : v) (*this)(e);
    }
};

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
