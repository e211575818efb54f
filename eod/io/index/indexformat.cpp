#include "eod/io/index/detail/indexformat.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <zlib.h>

#include <eod/engineoutputdata.h>

#include <eod/io/index/logindex.h>
#include <eod/recordsize.h>

#include "eod/io/detail/pathconversion.h"

namespace tq {
namespace eod {
namespace io {
namespace detail {

namespace {

const unsigned char MAGIC[4] = {'T', 'Q', 'I', 'X'};

}  // namespace

std::uint32_t crc32Of(std::uint32_t crc, const unsigned char* bytes, std::size_t n) {
    while (n > 0) {
        const uInt step = static_cast<uInt>(std::min<std::size_t>(n, 1u << 30));
        crc = static_cast<std::uint32_t>(::crc32(crc, bytes, step));
        bytes += step;
        n -= step;
    }
    return crc;
}

void encodeIndexHeader(const IndexHeader& header, unsigned char* out) {
    std::memcpy(out, MAGIC, 4);
    storeU16(out + 4, INDEX_VERSION);
    storeU16(out + 6, header.flags);
    storeU32(out + 8, static_cast<std::uint32_t>(header.covered_size >> 32));
    storeU32(out + 12, static_cast<std::uint32_t>(header.covered_size));
    storeU32(out + 16, header.edge_crc);
    storeU32(out + 20, static_cast<std::uint32_t>(header.count >> 32));
    storeU32(out + 24, static_cast<std::uint32_t>(header.count));
    storeU32(out + 28, header.entries_crc);
    storeU32(out + 32, crc32Of(0, out, 32));
}

bool decodeIndexHeader(const unsigned char* in, IndexHeader& header) {
    if (std::memcmp(in, MAGIC, 4) != 0 || loadU16(in + 4) != INDEX_VERSION) return false;
    if (loadU32(in + 32) != crc32Of(0, in, 32)) return false;
    header.flags = loadU16(in + 6);
    header.covered_size = loadU64(in + 8);
    header.edge_crc = loadU32(in + 16);
    header.count = loadU64(in + 20);
    header.entries_crc = loadU32(in + 28);
    return true;
}

void encodeIndexEntry(unsigned int frame_num, std::uint64_t offset, unsigned char* out) {
    storeU32(out, frame_num);
    storeU32(out + 4, static_cast<std::uint32_t>(offset >> 32));
    storeU32(out + 8, static_cast<std::uint32_t>(offset));
}

bool edgeChecksum(std::istream& log, std::uint64_t covered, std::uint32_t& crc) {
    const std::uint64_t n = std::min(covered, INDEX_EDGE_BYTES);
    unsigned char bytes[2 * INDEX_EDGE_BYTES];
    log.clear();
    log.seekg(0);
    log.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(n));
    log.seekg(static_cast<std::streamoff>(covered - n));
    log.read(reinterpret_cast<char*>(bytes + n), static_cast<std::streamsize>(n));
    const bool ok = static_cast<bool>(log);
    log.clear();
    if (!ok) return false;
    crc = crc32Of(0, bytes, static_cast<std::size_t>(2 * n));
    return true;
}

bool readRecordHead(std::istream& in, std::uint64_t offset, RecordHead& head) {
    // Longest header (7 bytes), the flag and the frame number.
    unsigned char bytes[12] = {};
    in.clear();
    in.seekg(static_cast<std::streamoff>(offset));
    in.read(reinterpret_cast<char*>(bytes), sizeof bytes);
    const std::size_t got = static_cast<std::size_t>(in.gcount());
    in.clear();
    const RecordSize record = recordSizeFromPrefix(bytes, got);
    if (!record.known) return false;
    head.id = static_cast<char>(bytes[0]);
    const std::size_t header = record.header_bytes;
    const std::uint64_t size = record.total_bytes - header;
    head.end = offset + record.total_bytes;
    head.frame_known = head.id == EngineOutputData::THIS_OBJECT_ID && size >= 5 &&
                       got >= header + 5;
    if (head.frame_known) head.frame_num = loadU32(bytes + header + 1);
    return true;
}

}  // namespace detail

std::string logIndexPath(const std::string& log_path) {
    const std::string log_ext = detail::narrowPath(EngineOutputData::LOGFILE_EXTENSION());
    const std::string index_ext = detail::narrowPath(EngineOutputData::LOGFILE_INDEX_EXTENSION());
    if (log_path.size() >= log_ext.size() &&
        log_path.compare(log_path.size() - log_ext.size(), log_ext.size(), log_ext) == 0) {
        return log_path.substr(0, log_path.size() - log_ext.size()) + index_ext;
    }
    return log_path + index_ext;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
