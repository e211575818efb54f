#include "frameledger.h"

namespace eodtool {

namespace {

// At most this many examples per line, so that a badly damaged file still prints briefly.
const std::size_t kMaxListed = 10;

template <class Container, class Print>
void printList(std::ostream& os, const Container& items, Print print) {
    std::size_t n = 0;
    for (const auto& item : items) {
        if (n == kMaxListed) {
            os << ", ... (" << items.size() - kMaxListed << " more)";
            break;
        }
        if (n++ > 0) os << ", ";
        print(item);
    }
}

}  // namespace

void FrameLedger::addFrame(unsigned int frame_num, std::uint64_t offset) {
    ++_num_frames;
    if (!_seen.insert(frame_num).second) {
        unsigned int& count = _duplicates[frame_num];
        count = count == 0 ? 2 : count + 1;
    }
    if (_has_last && frame_num < _last) _out_of_order.push_back({frame_num, _last, offset});
    if (!_has_last || frame_num > _last) _last = frame_num;
    _has_last = true;
}

void FrameLedger::addUnknownRecord(int object_id, std::uint64_t offset) {
    _unknown[object_id].push_back(offset);
}

void FrameLedger::addFrameWithUnknownSubRecords(unsigned int frame_num) {
    _frames_with_unknown.push_back(frame_num);
}

void FrameLedger::addCorruptRecord(std::uint64_t offset) { _corrupt.push_back(offset); }

void FrameLedger::setTruncatedTail(std::uint64_t last_good_end, std::uint64_t file_size) {
    _truncated = true;
    _last_good_end = last_good_end;
    _file_size = file_size;
}

std::vector<FrameLedger::Range> FrameLedger::gaps() const {
    std::vector<Range> result;
    bool first = true;
    unsigned int previous = 0;
    for (unsigned int n : _seen) {
        if (!first && n > previous + 1) result.push_back({previous + 1, n - 1});
        previous = n;
        first = false;
    }
    return result;
}

std::uint64_t FrameLedger::numMissing() const {
    std::uint64_t n = 0;
    for (const Range& r : gaps()) n += std::uint64_t(r.last) - r.first + 1;
    return n;
}

void FrameLedger::printGaps(std::ostream& os) const {
    const std::vector<Range> missing = gaps();
    os << "gaps: ";
    if (missing.empty()) {
        os << "none";
        return;
    }
    os << numMissing() << " missing frame numbers: ";
    printList(os, missing, [&](const Range& r) {
        os << r.first;
        if (r.last != r.first) os << '-' << r.last;
    });
}

void FrameLedger::print(std::ostream& os, const std::string& indent) const {
    os << indent;
    printGaps(os);
    os << '\n' << indent << "duplicates: ";
    if (_duplicates.empty()) {
        os << "none";
    } else {
        os << _duplicates.size() << " frame numbers: ";
        printList(os, _duplicates, [&](const std::pair<const unsigned int, unsigned int>& d) {
            os << d.first << " (x" << d.second << ')';
        });
    }
    os << '\n' << indent << "out of order: ";
    if (_out_of_order.empty()) {
        os << "none";
    } else {
        os << _out_of_order.size() << " frames: ";
        printList(os, _out_of_order, [&](const OutOfOrder& o) {
            os << o.frame_num << " after " << o.after << " at byte " << o.offset;
        });
    }
    os << '\n' << indent << "unknown ids skipped: ";
    if (_unknown.empty() && _frames_with_unknown.empty()) os << "none";
    bool first = true;
    for (const auto& u : _unknown) {
        if (!first) os << "; ";
        first = false;
        os << u.second.size() << " records of id " << u.first << " (first at byte "
           << u.second.front() << ')';
    }
    if (!_frames_with_unknown.empty()) {
        if (!first) os << "; ";
        os << _frames_with_unknown.size() << " frames held sub-records of unknown id: ";
        printList(os, _frames_with_unknown, [&](unsigned int n) { os << n; });
    }
    if (!_corrupt.empty()) {
        os << '\n' << indent << "corrupt records: " << _corrupt.size() << " at bytes ";
        printList(os, _corrupt, [&](std::uint64_t offset) { os << offset; });
    }
    os << '\n' << indent << "tail: ";
    if (_truncated) {
        os << "truncated: the file ends inside a record; the last good record ends at byte "
           << _last_good_end << " of " << _file_size;
    } else {
        os << "clean";
    }
    os << '\n';
}

}  // namespace eodtool
