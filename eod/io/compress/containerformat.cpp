#include <cstring>

#include "eod/detail/bytecodec.h"
#include "eod/io/compress/detail/containerformat.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

bool PayloadCursor::take(std::size_t n) {
    if (!_ok || static_cast<std::size_t>(_end - _p) < n) {
        _ok = false;
        return false;
    }
    return true;
}

unsigned char PayloadCursor::u8() {
    if (!take(1)) return 0;
    return *_p++;
}

std::uint32_t PayloadCursor::u32() {
    if (!take(4)) return 0;
    const std::uint32_t v = ::tq::eod::detail::loadU32(_p);
    _p += 4;
    return v;
}

std::uint64_t PayloadCursor::u64() {
    if (!take(8)) return 0;
    const std::uint64_t v = ::tq::eod::detail::loadU64(_p);
    _p += 8;
    return v;
}

std::string PayloadCursor::string() {
    if (!_ok) return std::string();
    const void* end = std::memchr(_p, 0, static_cast<std::size_t>(_end - _p));
    if (!end) {
        _ok = false;
        return std::string();
    }
    std::string s(reinterpret_cast<const char*>(_p), static_cast<const unsigned char*>(end) - _p);
    _p += s.size() + 1;
    return s;
}

bool PayloadCursor::bytes(const char* expected, std::size_t n) {
    if (!take(n)) return false;
    const bool same = std::memcmp(_p, expected, n) == 0;
    _p += n;
    return same;
}

void appendString(std::vector<unsigned char>& out, const std::string& s) {
    out.insert(out.end(), s.begin(), s.end());
    out.push_back(0);
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
