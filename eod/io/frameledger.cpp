#include <eod/io/frameledger.h>

#include <algorithm>
#include <climits>
#include <iterator>

#include <eod/engineoutputdata.h>

namespace tq {
namespace eod {
namespace io {

namespace {

// Prints the examples kept and how many more there were.
template <class Container, class Print>
void printList(std::ostream& os, const Container& items, std::uint64_t total, Print print) {
    std::size_t n = 0;
    for (const auto& item : items) {
        if (n++ > 0) os << ", ";
        print(item);
    }
    if (total > items.size()) os << ", ... (" << total - items.size() << " more)";
}

template <class T>
void keepExample(std::vector<T>& examples, const T& item) {
    if (examples.size() < FrameLedger::kMaxListed) examples.push_back(item);
}

}  // namespace

bool FrameLedger::insertNumber(unsigned int n) {
    // Frames mostly come in order, one after the other: extend the last run directly.
    if (!_runs.empty() && _runs.rbegin()->second != UINT_MAX && _runs.rbegin()->second + 1 == n) {
        ++_runs.rbegin()->second;
        return true;
    }
    auto next = _runs.upper_bound(n);
    if (next != _runs.begin()) {
        const auto previous = std::prev(next);
        if (previous->second >= n) return false;
        if (previous->second + 1 == n) {
            previous->second = n;
            if (next != _runs.end() && next->first == n + 1) {
                previous->second = next->second;
                _runs.erase(next);
            }
            return true;
        }
    }
    if (next != _runs.end() && n + 1 == next->first) {
        const unsigned int last = next->second;
        _runs.erase(next);
        _runs.emplace(n, last);
    } else {
        _runs.emplace(n, n);
    }
    return true;
}

void FrameLedger::addFrame(unsigned int frame_num, std::uint64_t offset) {
    ++_num_frames;
    if (!insertNumber(frame_num)) {
        ++_repeated;
        const auto known = _duplicates.find(frame_num);
        if (known != _duplicates.end()) {
            ++known->second;
        } else if (_duplicates.size() < kMaxListed) {
            _duplicates.emplace(frame_num, 2);
        }
    }
    if (_has_last && frame_num < _last) {
        ++_out_of_order_count;
        keepExample(_out_of_order, OutOfOrder{frame_num, _last, offset});
    }
    if (!_has_last || frame_num > _last) _last = frame_num;
    _has_last = true;
}

void FrameLedger::record(const Serializable& record, std::uint64_t offset, std::uint64_t,
                         unsigned int status) {
    const auto* frame = dynamic_cast<const EngineOutputData*>(&record);
    if (!frame) return;
    addFrame(frame->frameNum(), offset);
    if (status & Serializable::STATUS_UNKNOWN_OBJECT_ID) addFrameWithUnknownSubRecords(frame->frameNum());
}

void FrameLedger::unknownRecord(int object_id, std::uint64_t offset, std::uint64_t) {
    addUnknownRecord(object_id, offset);
}

void FrameLedger::corruptRecord(std::uint64_t offset, std::uint64_t) { addCorruptRecord(offset); }

void FrameLedger::truncatedTail(std::uint64_t offset, std::uint64_t size) {
    setTruncatedTail(offset, size);
}

bool FrameLedger::hasFrameNum(unsigned int frame_num) const {
    auto run = _runs.upper_bound(frame_num);
    if (run == _runs.begin()) return false;
    --run;
    return frame_num <= run->second;
}

void FrameLedger::mergeFrameNumbers(const FrameLedger& other) {
    const auto distinct = [](const std::map<unsigned int, unsigned int>& runs) {
        std::uint64_t n = 0;
        for (const auto& run : runs) n += std::uint64_t(run.second) - run.first + 1;
        return n;
    };
    std::vector<std::pair<unsigned int, unsigned int>> all(_runs.begin(), _runs.end());
    all.insert(all.end(), other._runs.begin(), other._runs.end());
    std::sort(all.begin(), all.end());
    const std::uint64_t before = distinct(_runs);
    _runs.clear();
    for (const auto& run : all) {
        if (!_runs.empty() && std::uint64_t(_runs.rbegin()->second) + 1 >= run.first) {
            _runs.rbegin()->second = std::max(_runs.rbegin()->second, run.second);
        } else {
            _runs.emplace_hint(_runs.end(), run.first, run.second);
        }
    }
    _num_frames += distinct(_runs) - before;
}

void FrameLedger::addUnknownRecord(int object_id, std::uint64_t offset) {
    Skipped& skipped = _unknown[object_id];
    if (skipped.count++ == 0) skipped.first = offset;
    skipped.last = offset;
}

void FrameLedger::addFrameWithUnknownSubRecords(unsigned int frame_num) {
    ++_frames_with_unknown_count;
    keepExample(_frames_with_unknown, frame_num);
}

void FrameLedger::addCorruptRecord(std::uint64_t offset) {
    if (_corrupt.count++ == 0) _corrupt.first = offset;
    _corrupt.last = offset;
    keepExample(_corrupt_listed, offset);
}

void FrameLedger::setTruncatedTail(std::uint64_t last_good_end, std::uint64_t size,
                                   const std::string& source) {
    _truncated = true;
    _tail_source = source;
    _last_good_end = last_good_end;
    _size = size;
}

std::vector<FrameLedger::Range> FrameLedger::frameRuns() const {
    std::vector<Range> result;
    result.reserve(_runs.size());
    for (const auto& run : _runs) result.push_back({run.first, run.second});
    return result;
}

std::vector<FrameLedger::Range> FrameLedger::gaps() const {
    std::vector<Range> result;
    for (auto it = _runs.begin(); it != _runs.end(); ++it) {
        const auto next = std::next(it);
        if (next != _runs.end()) result.push_back({it->second + 1, next->first - 1});
    }
    return result;
}

std::uint64_t FrameLedger::numMissing() const {
    std::uint64_t n = 0;
    for (const Range& r : gaps()) n += std::uint64_t(r.last) - r.first + 1;
    return n;
}

void FrameLedger::printGaps(std::ostream& os) const {
    os << "gaps: ";
    if (_runs.size() <= 1) {
        os << "none";
        return;
    }
    std::vector<Range> listed;
    for (const Range& r : gaps()) keepExample(listed, r);
    os << numMissing() << " missing frame numbers: ";
    printList(os, listed, _runs.size() - 1, [&](const Range& r) {
        os << r.first;
        if (r.last != r.first) os << '-' << r.last;
    });
}

void FrameLedger::print(std::ostream& os, const std::string& indent) const {
    os << indent;
    printGaps(os);
    os << '\n' << indent << "duplicates: ";
    if (_repeated == 0) {
        os << "none";
    } else {
        // Only the first repeated frame numbers are kept; the repeats of the others are
        // counted.
        std::uint64_t listed = 0;
        for (const auto& d : _duplicates) listed += d.second - 1;
        os << (_repeated > listed ? "more than " : "") << _duplicates.size() << " frame numbers: ";
        std::size_t n = 0;
        for (const auto& d : _duplicates) os << (n++ > 0 ? ", " : "") << d.first << " (x" << d.second << ')';
        if (_repeated > listed) os << ", ... (" << _repeated - listed << " more repeated frames)";
    }
    os << '\n' << indent << "out of order: ";
    if (_out_of_order_count == 0) {
        os << "none";
    } else {
        os << _out_of_order_count << " frames: ";
        printList(os, _out_of_order, _out_of_order_count, [&](const OutOfOrder& o) {
            os << o.frame_num << " after " << o.after << " at byte " << o.offset;
        });
    }
    os << '\n' << indent << "unknown ids skipped: ";
    if (_unknown.empty() && _frames_with_unknown_count == 0) os << "none";
    bool first = true;
    for (const auto& u : _unknown) {
        if (!first) os << "; ";
        first = false;
        os << u.second.count << " records of id " << u.first << " (first at byte " << u.second.first;
        if (u.second.count > 1) os << ", last at byte " << u.second.last;
        os << ')';
    }
    if (_frames_with_unknown_count > 0) {
        if (!first) os << "; ";
        os << _frames_with_unknown_count << " frames held sub-records of unknown id: ";
        printList(os, _frames_with_unknown, _frames_with_unknown_count,
                  [&](unsigned int n) { os << n; });
    }
    if (_corrupt.count > 0) {
        os << '\n' << indent << "corrupt records: " << _corrupt.count << " at bytes ";
        printList(os, _corrupt_listed, _corrupt.count, [&](std::uint64_t offset) { os << offset; });
        if (_corrupt.count > _corrupt_listed.size()) os << " (last at byte " << _corrupt.last << ')';
    }
    os << '\n' << indent << "tail: ";
    if (_truncated) {
        os << "truncated: the " << _tail_source
           << " ends inside a record; the last good record ends at byte " << _last_good_end
           << " of " << _size;
    } else {
        os << "clean";
    }
    os << '\n';
}

}  // namespace io
}  // namespace eod
}  // namespace tq
