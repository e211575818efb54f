#ifndef EOD_IO_FRAMELEDGER_H
#define EOD_IO_FRAMELEDGER_H

// What a sequence of frames says about itself: how many, which frame numbers, which are
// missing, repeated or out of order, which records were skipped, and where the readable
// part of a file or stream ends.
//
// Memory stays small whatever the input: frame numbers are kept as runs of consecutive
// numbers, and every other finding as a count with its first examples (at most
// kMaxListed) and, for offsets, the last one. A file of ten million skipped records costs a
// few counters.
//
// A ledger is also a RecordScanReporter: scanRecordFile(path, ledger) fills it from a file.

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <eod/io/recordfilescanner.h>

namespace tq {
namespace eod {
namespace io {

class FrameLedger : public RecordScanReporter {
public:
    // Examples kept and printed per finding.
    static const std::size_t kMaxListed = 10;

    struct Range {
        unsigned int first;
        unsigned int last;
    };

    // Frames in the order they were read; `offset` is the byte offset of the frame's record.
    void addFrame(unsigned int frame_num, std::uint64_t offset);
    // A top-level record of an id nobody registered, skipped whole.
    void addUnknownRecord(int object_id, std::uint64_t offset);
    // A frame that held sub-records of unknown id (dropped while reading it).
    void addFrameWithUnknownSubRecords(unsigned int frame_num);
    // A record whose bytes were present but could not be decoded.
    void addCorruptRecord(std::uint64_t offset);
    // The file (or stream, as `source` says) ends inside a record: the last complete record
    // ends at `last_good_end` of `size` bytes.
    void setTruncatedTail(std::uint64_t last_good_end, std::uint64_t size,
                          const std::string& source = "file");
    // Adds the frame numbers of `other` that this ledger lacks, each as one frame: the
    // frames of a recording whose record types are logged in separate files.
    void mergeFrameNumbers(const FrameLedger& other);

    // The scanner's findings: frames (other records are not the ledger's business), unknown
    // and corrupt records, the torn tail.
    void record(const Serializable& record, std::uint64_t offset, std::uint64_t bytes,
                unsigned int status) override;
    void unknownRecord(int object_id, std::uint64_t offset, std::uint64_t bytes) override;
    void corruptRecord(std::uint64_t offset, std::uint64_t bytes) override;
    void truncatedTail(std::uint64_t offset, std::uint64_t size) override;

    // Whether a frame of this number was read.
    bool hasFrameNum(unsigned int frame_num) const;
    // Calls f(n) for each frame number read, in ascending order, once each.
    template <class F>
    void forEachFrameNum(F f) const {
        for (const auto& run : _runs) {
            for (unsigned int n = run.first;; ++n) {
                f(n);
                if (n == run.second) break;
            }
        }
    }

    std::size_t numFrames() const { return _num_frames; }
    bool empty() const { return _num_frames == 0; }
    unsigned int firstFrameNum() const { return _runs.begin()->first; }
    unsigned int lastFrameNum() const { return _runs.rbegin()->second; }

    // The frame numbers read, as runs of consecutive numbers in ascending order.
    std::vector<Range> frameRuns() const;
    // Frame numbers between the smallest and the largest that never arrived.
    std::vector<Range> gaps() const;
    std::uint64_t numMissing() const;
    // Frames whose number had been seen before.
    std::uint64_t numRepeated() const { return _repeated; }
    std::uint64_t numOutOfOrder() const { return _out_of_order_count; }
    bool truncated() const { return _truncated; }
    std::uint64_t lastGoodEnd() const { return _last_good_end; }

    // The ledger section of `eod info`, each line indented by `indent`.
    void print(std::ostream& os, const std::string& indent) const;
    // Just the "gaps: ..." text, without indent or end of line.
    void printGaps(std::ostream& os) const;

private:
    // Adds a frame number; false when it was there already.
    bool insertNumber(unsigned int frame_num);

    struct Skipped {
        std::uint64_t count = 0;
        std::uint64_t first = 0;
        std::uint64_t last = 0;
    };
    struct OutOfOrder {
        unsigned int frame_num;
        unsigned int after;
        std::uint64_t offset;
    };

    std::size_t _num_frames = 0;
    // Runs of consecutive frame numbers: first -> last.
    std::map<unsigned int, unsigned int> _runs;
    std::uint64_t _repeated = 0;
    // How often each of the first repeated frame numbers was seen.
    std::map<unsigned int, unsigned int> _duplicates;
    std::uint64_t _out_of_order_count = 0;
    std::vector<OutOfOrder> _out_of_order;
    bool _has_last = false;
    unsigned int _last = 0;
    std::map<int, Skipped> _unknown;
    std::uint64_t _frames_with_unknown_count = 0;
    std::vector<unsigned int> _frames_with_unknown;
    Skipped _corrupt;
    std::vector<std::uint64_t> _corrupt_listed;
    bool _truncated = false;
    std::string _tail_source;
    std::uint64_t _last_good_end = 0;
    std::uint64_t _size = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
