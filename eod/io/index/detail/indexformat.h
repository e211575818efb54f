#ifndef EOD_IO_INDEX_DETAIL_INDEXFORMAT_H
#define EOD_IO_INDEX_DETAIL_INDEXFORMAT_H

// The bytes of an index file (docs/index-files.md): the 36-byte header, the 12-byte entries,
// and the edge checksum that ties an index to the log it describes.

#include <cstdint>
#include <istream>
#include <string>

#include "eod/detail/bytecodec.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

using ::tq::eod::detail::loadU16;
using ::tq::eod::detail::loadU32;
using ::tq::eod::detail::loadU64;
using ::tq::eod::detail::storeU16;
using ::tq::eod::detail::storeU32;

const std::size_t INDEX_HEADER_SIZE = 36;
const std::size_t INDEX_ENTRY_SIZE = 12;
const std::uint16_t INDEX_VERSION = 1;
const std::uint16_t INDEX_FLAG_MONOTONIC = 1;
// Bytes at each end of the covered part of a log that the edge checksum reads.
const std::uint64_t INDEX_EDGE_BYTES = 256;

struct IndexHeader {
    std::uint16_t flags = 0;
    std::uint64_t covered_size = 0;
    std::uint32_t edge_crc = 0;
    std::uint64_t count = 0;
    std::uint32_t entries_crc = 0;
};

// The 36 header bytes, its own CRC included.
void encodeIndexHeader(const IndexHeader& header, unsigned char* out);
// False when the magic, the version or the header CRC is wrong.
bool decodeIndexHeader(const unsigned char* in, IndexHeader& header);

void encodeIndexEntry(unsigned int frame_num, std::uint64_t offset, unsigned char* out);

// The edge checksum of the log's first `covered` bytes; false when the log is shorter.
bool edgeChecksum(std::istream& log, std::uint64_t covered, std::uint32_t& crc);

std::uint32_t crc32Of(std::uint32_t crc, const unsigned char* bytes, std::size_t n);

// What the first bytes of a record at `offset` say: its id, where it ends by the size in its
// header, and, for a frame record whose data is long enough, its frame number (the four
// bytes after the frame's one-byte flag). False when the header is not all there; `end` may
// lie beyond the file.
struct RecordHead {
    char id = 0;
    std::uint64_t end = 0;
    bool frame_known = false;
    unsigned int frame_num = 0;
};
bool readRecordHead(std::istream& in, std::uint64_t offset, RecordHead& head);

// X.itql beside X.tql: the log path with its extension replaced (appended when it has none).
std::string indexPathOf(const std::string& log_path);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
