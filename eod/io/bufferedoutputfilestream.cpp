#include <eod/io/bufferedoutputfilestream.h>

#include "eod/io/pathconversion.h"

namespace tq {
namespace eod {
namespace io {

BufferedOutputFileStream::BufferedOutputFileStream(const std::string& path,
                                                   std::ios_base::openmode mode, int bufferSize) {
    setBufferSize(bufferSize);
    open(path, mode | std::ios_base::out);
}

BufferedOutputFileStream::BufferedOutputFileStream(const std::wstring& path,
                                                   std::ios_base::openmode mode, int bufferSize)
    : BufferedOutputFileStream(detail::narrowPath(path), mode, bufferSize) {}

BufferedOutputFileStream::~BufferedOutputFileStream() {
    if (is_open()) close();
}

void BufferedOutputFileStream::setBufferSize(int size) {
    _buffer_size = size;
    if (is_open()) {
        flush();
        return;
    }
    if (size <= 0) {
        _buffer.reset();
        rdbuf()->pubsetbuf(nullptr, 0);
        return;
    }
    std::unique_ptr<char[]> replacement(new char[static_cast<std::size_t>(size)]);
    rdbuf()->pubsetbuf(replacement.get(), size);
    _buffer = std::move(replacement);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
