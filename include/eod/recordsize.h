#ifndef EOD_RECORDSIZE_H
#define EOD_RECORDSIZE_H

// The size of a record from its first bytes, for every reader that must know how much to
// read before it reads it (buffers, streams, sockets, files, scanners). A record starts with
// its object id (1 byte) and a big-endian data size: 2 bytes, or, when those hold 65535, 4
// more bytes with the real size.

#include <cstddef>
#include <cstdint>

namespace tq {
namespace eod {

struct RecordSize {
    // False while the bytes given do not hold the whole header; then header_bytes says how
    // many are needed to tell (3, or 7 for the long form) and total_bytes is 0.
    bool known = false;
    std::size_t header_bytes = 3;
    // Header plus data, as the header announces it: not a promise that the data is there.
    std::uint64_t total_bytes = 0;
};

// What the first `available` bytes at `prefix` (the id byte first) say; reads at most 7 of
// them and never past `available`.
RecordSize recordSizeFromPrefix(const unsigned char* prefix, std::size_t available);

}  // namespace eod
}  // namespace tq

#endif
