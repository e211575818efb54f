#include "eod/detail/textcolumns.h"

#include <charconv>
#include <cstring>

namespace tq {
namespace eod {
namespace detail {

namespace {

// Per-stream state lives in the stream's own word slots, so printing keeps no globals.
int depthSlot() {
    static const int slot = std::ios_base::xalloc();
    return slot;
}

int columnCountSlot() {
    static const int slot = std::ios_base::xalloc();
    return slot;
}

template <class T>
std::to_chars_result toChars(char* first, char* last, T value) {
    return std::to_chars(first, last, value);
}

}  // namespace

TextLine::TextLine(std::ostream& os) : _os(os) {
    if (_os.iword(depthSlot())++ == 0) _os.iword(columnCountSlot()) = 0;
}

TextLine::~TextLine() { --_os.iword(depthSlot()); }

void Columns::column(const char* text, std::size_t n) {
    if (_os.iword(columnCountSlot())++ > 0) _os.put('\t');
    _os.write(text, static_cast<std::streamsize>(n));
}

Columns& Columns::operator<<(const std::string& text) {
    column(text.data(), text.size());
    return *this;
}

Columns& Columns::operator<<(const char* text) {
    column(text, std::strlen(text));
    return *this;
}

Columns& Columns::operator<<(bool v) {
    column(v ? "1" : "0", 1);
    return *this;
}

Columns& Columns::integer(long long v) {
    char buf[24];
    const auto r = toChars(buf, buf + sizeof buf, v);
    column(buf, static_cast<std::size_t>(r.ptr - buf));
    return *this;
}

Columns& Columns::integer(unsigned long long v) {
    char buf[24];
    const auto r = toChars(buf, buf + sizeof buf, v);
    column(buf, static_cast<std::size_t>(r.ptr - buf));
    return *this;
}

Columns& Columns::operator<<(float v) {
    char buf[32];
    const auto r = toChars(buf, buf + sizeof buf, v);
    column(buf, static_cast<std::size_t>(r.ptr - buf));
    return *this;
}

Columns& Columns::operator<<(double v) {
    char buf[32];
    const auto r = toChars(buf, buf + sizeof buf, v);
    column(buf, static_cast<std::size_t>(r.ptr - buf));
    return *this;
}

}  // namespace detail
}  // namespace eod
}  // namespace tq
