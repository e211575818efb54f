#ifndef EOD_DETAIL_TEXTCOLUMNS_H
#define EOD_DETAIL_TEXTCOLUMNS_H

// The column form of every record's text output: a header line of labels and a value
// line, both tab-separated. A composite prints its own columns and then those of its
// sub-records, each through this helper, so no record formats text by hand.
//
// Nested printLine/printHeader calls write into one line: a TextLine opened by the
// outermost call marks the start of the line, and Columns puts a tab before every column
// but the line's first. Neither writes the end of line; the caller does.
//
// A Columns is itself a TextLine, so a printOwnHeader/printOwnData called on its own starts
// a line of its own, however the stream was used before. A function that writes its
// columns through more than one Columns opens a TextLine around them all, so that its later
// columns continue its line.

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace tq {
namespace eod {
namespace detail {

class TextLine {
public:
    explicit TextLine(std::ostream& os);
    ~TextLine();
    TextLine(const TextLine&) = delete;
    TextLine& operator=(const TextLine&) = delete;

private:
    std::ostream& _os;
};

class Columns {
public:
    explicit Columns(std::ostream& os) : _line(os), _os(os) {}

    Columns& operator<<(const std::string& text);
    Columns& operator<<(const char* text);
    Columns& operator<<(bool v);
    // One-byte values are numbers in records (states, levels), never characters.
    Columns& operator<<(char v) { return integer(v); }
    Columns& operator<<(signed char v) { return integer(v); }
    Columns& operator<<(unsigned char v) { return integer(v); }
    Columns& operator<<(short v) { return integer(v); }
    Columns& operator<<(unsigned short v) { return integer(v); }
    Columns& operator<<(int v) { return integer(v); }
    Columns& operator<<(unsigned int v) { return integer(v); }
    Columns& operator<<(long v) { return integer(v); }
    Columns& operator<<(unsigned long v) { return integer(v); }
    Columns& operator<<(long long v) { return integer(v); }
    Columns& operator<<(unsigned long long v) { return integer(v); }
    // Shortest text that reads back to the same value.
    Columns& operator<<(float v);
    Columns& operator<<(double v);

    template <class T>
    Columns& operator<<(const std::vector<T>& values) {
        for (const T& v : values) *this << v;
        return *this;
    }

private:
    Columns& integer(long long v);
    Columns& integer(unsigned long long v);
    template <class T>
    Columns& integer(T v) {
        if constexpr (std::is_signed<T>::value) {
            return integer(static_cast<long long>(v));
        } else {
            return integer(static_cast<unsigned long long>(v));
        }
    }
    void column(const char* text, std::size_t n);

    TextLine _line;
    std::ostream& _os;
};

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
