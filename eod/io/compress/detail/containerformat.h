#ifndef EOD_IO_COMPRESS_DETAIL_CONTAINERFORMAT_H
#define EOD_IO_COMPRESS_DETAIL_CONTAINERFORMAT_H

// The items of a compressed container file (layout in docs/compression.md): each is a
// CompressedSerializable record whose payload starts with a kind byte. Numbers big-endian.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tq {
namespace eod {
namespace io {
namespace detail {

enum ContainerItemKind : unsigned char {
    ITEM_HEADER = 'H',
    ITEM_KEY_POINT = 'K',
    ITEM_STREAM = 'S',
    ITEM_DATA = 'D',
    ITEM_INDEX = 'I',
};

constexpr char CONTAINER_MAGIC[4] = {'E', 'O', 'D', 'C'};
constexpr unsigned char CONTAINER_VERSION = 1;
constexpr char INDEX_MAGIC[8] = {'E', 'O', 'D', 'C', 'I', 'D', 'X', '1'};
// Offset of the index record (8) and INDEX_MAGIC (8), the last bytes of a closed file.
constexpr std::size_t TRAILER_BYTES = 16;
constexpr std::size_t INDEX_ENTRY_BYTES = 16;
// Stream 0 carries the frames' records; image streams are numbered from 1.
constexpr std::uint32_t RECORD_STREAM_ID = 0;
// Most streams a file may declare, and the longest item payload a reader takes (a chunk of
// one frame: its largest image stays far below).
constexpr std::uint32_t MAX_STREAMS = 65536;
constexpr std::uint32_t MAX_ITEM_PAYLOAD = 256u << 20;
// Most frames in one group of the record stream.
constexpr std::uint32_t MAX_GROUP_FRAMES = 4096;

struct IndexEntry {
    std::uint32_t firstOrdinal = 0;
    std::uint32_t firstFrameNum = 0;
    std::uint64_t offset = 0;
};

// Reads the fields of one payload; every read is bounds-checked and a short payload makes
// ok() false (the reads then give zeros and empty strings).
class PayloadCursor {
  public:
    PayloadCursor(const unsigned char* data, std::size_t length) : _p(data), _end(data + length) {}

    unsigned char u8();
    std::uint32_t u32();
    std::uint64_t u64();
    std::string string();
    bool bytes(const char* expected, std::size_t n);
    std::size_t remaining() const { return _ok ? static_cast<std::size_t>(_end - _p) : 0; }
    const unsigned char* position() const { return _p; }
    bool ok() const { return _ok; }

  private:
    bool take(std::size_t n);
    const unsigned char* _p;
    const unsigned char* _end;
    bool _ok = true;
};

void appendString(std::vector<unsigned char>& out, const std::string& s);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
