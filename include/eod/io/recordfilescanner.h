#ifndef EOD_IO_RECORDFILESCANNER_H
#define EOD_IO_RECORDFILESCANNER_H

// Walks a raw record file or a log file record by record, front to back, without merging or
// keeping records, and tells a reporter what it finds: the records that decode, and the
// damage between them with its byte offsets. A damaged record is skipped by the size its
// header announces, as every reader skips it, so the scan sees what the readers see.
//
// Memory stays bounded whatever a header announces: bytes are read through a window of about
// a megabyte, a record is decoded only when all of it is in the file and it is within the
// record size limit, and a record that is skipped is passed by a seek.

#include <cstdint>
#include <istream>
#include <string>

namespace tq {
namespace eod {

class Serializable;

namespace io {

class RecordScanReporter {
public:
    virtual ~RecordScanReporter() = default;
    // A record that decoded, `bytes` long with its header. `status` holds the factory's status
    // bits: Serializable::STATUS_UNKNOWN_OBJECT_ID when a frame dropped sub-records of an id
    // nobody registered.
    virtual void record(const Serializable& record, std::uint64_t offset, std::uint64_t bytes,
                        unsigned int status) = 0;
    // A whole record of an id no class is registered for.
    virtual void unknownRecord(int object_id, std::uint64_t offset, std::uint64_t bytes) = 0;
    // A record whose bytes are all there but do not decode, or that exceeds the size limit.
    virtual void corruptRecord(std::uint64_t offset, std::uint64_t bytes) = 0;
    // The data ends inside the record that starts at `offset`: the readable part is the
    // `offset` bytes before it, of `size`.
    virtual void truncatedTail(std::uint64_t offset, std::uint64_t size) = 0;
};

// Records larger than this (header included) are reported as corrupt, not decoded; a limit
// above 1 GiB counts as 1 GiB.
const std::uint64_t DEFAULT_MAX_SCANNED_RECORD_SIZE = std::uint64_t(64) << 20;

// The first `size` bytes of a stream, read once from front to back (seeks forward only).
void scanRecords(std::istream& in, std::uint64_t size, RecordScanReporter& reporter,
                 std::uint64_t max_record_size = DEFAULT_MAX_SCANNED_RECORD_SIZE);

// A regular file: anything else (a FIFO, a device, a directory) could block or never end, and
// is refused with EngineOutputDataFileError "<path>: not a regular file"; "<path>: cannot
// open file" when it cannot be read.
void scanRecordFile(const std::string& path, RecordScanReporter& reporter,
                    std::uint64_t max_record_size = DEFAULT_MAX_SCANNED_RECORD_SIZE);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
