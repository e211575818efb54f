#ifndef EOD_TOOLS_FRAMELEDGER_H
#define EOD_TOOLS_FRAMELEDGER_H

// What a sequence of frames says about itself: how many, which frame numbers, which are
// missing, repeated or out of order, which records were skipped, and where the readable
// part of a file ends.

#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace eodtool {

class FrameLedger {
public:
    // Frames in the order they were read; `offset` is the byte offset of the frame's record.
    void addFrame(unsigned int frame_num, std::uint64_t offset);
    // A top-level record of an id nobody registered, skipped whole.
    void addUnknownRecord(int object_id, std::uint64_t offset);
    // A frame that held sub-records of unknown id (dropped while reading it).
    void addFrameWithUnknownSubRecords(unsigned int frame_num);
    // A record whose bytes were present but could not be decoded.
    void addCorruptRecord(std::uint64_t offset);
    // The file ends inside a record: the last complete record ends at `last_good_end`.
    void setTruncatedTail(std::uint64_t last_good_end, std::uint64_t file_size);

    std::size_t numFrames() const { return _num_frames; }
    bool empty() const { return _num_frames == 0; }
    unsigned int firstFrameNum() const { return *_seen.begin(); }
    unsigned int lastFrameNum() const { return *_seen.rbegin(); }

    struct Range {
        unsigned int first;
        unsigned int last;
    };
    // Frame numbers between the smallest and the largest that never arrived.
    std::vector<Range> gaps() const;
    std::uint64_t numMissing() const;
    // Frame numbers seen more than once, with how often.
    const std::map<unsigned int, unsigned int>& duplicates() const { return _duplicates; }
    struct OutOfOrder {
        unsigned int frame_num;
        unsigned int after;
        std::uint64_t offset;
    };
    const std::vector<OutOfOrder>& outOfOrder() const { return _out_of_order; }
    bool truncated() const { return _truncated; }
    std::uint64_t lastGoodEnd() const { return _last_good_end; }

    const std::set<unsigned int>& frameNumbers() const { return _seen; }

    // The ledger section of `eod info`, each line indented by `indent`.
    void print(std::ostream& os, const std::string& indent) const;
    // Just the "gaps: ..." text, without indent or end of line.
    void printGaps(std::ostream& os) const;

private:
    std::size_t _num_frames = 0;
    std::set<unsigned int> _seen;
    std::map<unsigned int, unsigned int> _duplicates;
    std::vector<OutOfOrder> _out_of_order;
    bool _has_last = false;
    unsigned int _last = 0;
    std::map<int, std::vector<std::uint64_t>> _unknown;
    std::vector<unsigned int> _frames_with_unknown;
    std::vector<std::uint64_t> _corrupt;
    bool _truncated = false;
    std::uint64_t _last_good_end = 0;
    std::uint64_t _file_size = 0;
};

}  // namespace eodtool

#endif
