#include <eod/io/index/framerangereader.h>

#include <algorithm>
#include <filesystem>

#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>

#include <eod/engineoutputbase.h>
#include <eod/io/engineoutputdatafileerror.h>
#include <eod/io/index/logindex.h>
#include <eod/serializablefactory.h>

#include "eod/io/detail/pathconversion.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace fs = std::filesystem;

std::vector<std::string> recordingLogFiles(const std::string& path, std::vector<std::string>* skipped) {
    std::error_code ec;
    if (!fs::is_directory(fs::u8path(path), ec)) return {path};
    std::vector<std::wstring> passed_over;
    std::vector<std::string> logs;
    for (const std::wstring& log : EngineOutputDataFileReader::listLogFiles(detail::widePath(path), passed_over)) {
        logs.push_back(detail::narrowPath(log));
    }
    if (skipped) {
        for (const std::wstring& entry : passed_over) skipped->push_back(detail::narrowPath(entry));
    }
    if (logs.empty()) throw EngineOutputDataFileError(path + ": no log files");
    return logs;
}

// One log read from a byte offset on, with the next record not yet merged.
class FrameRangeReader::Stream {
  public:
    Stream(const std::string& path, std::uint64_t offset)
        : _path(path), _in(path, std::ios_base::in | std::ios_base::binary) {
        if (!_in) throw EngineOutputDataFileError("LogScanner - could not open file " + path);
        _in.seekg(static_cast<std::streamoff>(offset));
    }

    // As the full merge's stream: a bad record is reported when it is read and passed over;
    // with torn tails last, one that ends the file is kept for throwTornTail().
    const boost::shared_ptr<EngineOutputData>& current() {
        if (!_current && !atEnd()) {
            unsigned int status = 0;
            _current = boost::dynamic_pointer_cast<EngineOutputData>(
                SerializableFactory::newObjectWithStatus(_in, status));
            if (!_current) {
                if (!_torn_tail_last || !atEnd()) throwCorrupt();
                _torn_tail = true;
            }
        }
        return _current;
    }
    void setTornTailLast(bool last) { _torn_tail_last = last; }
    void advance() { _current.reset(); }
    void throwTornTail() {
        if (!_torn_tail) return;
        _torn_tail = false;
        throwCorrupt();
    }

  private:
    bool atEnd() {
        if (_in.peek() != std::ifstream::traits_type::eof()) return false;
        _in.clear();
        return true;
    }
    [[noreturn]] void throwCorrupt() {
        _in.clear();
        throw EngineOutputDataFileError(
            "FrameRangeReader::readData() - corrupt or invalid logfile: " + _path);
    }

    std::string _path;
    std::ifstream _in;
    boost::shared_ptr<EngineOutputData> _current;
    bool _torn_tail = false;
    bool _torn_tail_last = false;
};

FrameRangeReader::FrameRangeReader() = default;

FrameRangeReader::~FrameRangeReader() = default;

void FrameRangeReader::open(const std::string& path) {
    EOD_REQUIRE(_mode == Mode::CLOSED, "files already open");
    _logs = recordingLogFiles(path);
    _path = path;
    _first = 0;
    _last = std::numeric_limits<unsigned int>::max();
    _mode = Mode::OPEN;
}

void FrameRangeReader::setRange(unsigned int first, unsigned int last) {
    EOD_REQUIRE(_mode == Mode::OPEN, "range set after reading began");
    EOD_REQUIRE(first <= last, "first > last");
    _first = first;
    _last = last;
}

void FrameRangeReader::setTornTailsLast(bool last) {
    EOD_REQUIRE(_mode == Mode::OPEN, "option set after reading began");
    _torn_tails_last = last;
}

void FrameRangeReader::close() {
    _streams.clear();
    _all.closeFiles();
    _logs.clear();
    _mode = Mode::CLOSED;
}

void FrameRangeReader::start() {
    if (startSearch()) {
        _mode = Mode::SEARCH;
        return;
    }
    _streams.clear();
    std::error_code ec;
    _all.setTornTailsLast(_torn_tails_last);
    if (fs::is_directory(fs::u8path(_path), ec)) {
        _all.openFiles(_path);
    } else {
        _all.openFile(_path);
    }
    _mode = Mode::MERGE_ALL;
}

bool FrameRangeReader::startSearch() {
    for (const std::string& log : _logs) {
        LogIndex index = LogIndex::open(log);
        for (int attempt = 0;; ++attempt) {
            if (!index.monotonic()) return false;
            const std::size_t i = index.lowerBound(_first);
            // The search is only as good as the two entries it lands between.
            const bool before_ok = i == 0 || (index.entry(i - 1).frame_num < _first && index.confirms(i - 1));
            const bool at_ok = i == index.size() || (index.entry(i).frame_num >= _first && index.confirms(i));
            if (before_ok && at_ok) {
                const std::uint64_t offset = i < index.size() ? index.entry(i).offset : index.recordsEnd();
                _streams.push_back(std::make_unique<Stream>(log, offset));
                _streams.back()->setTornTailLast(_torn_tails_last);
                break;
            }
            if (attempt > 0) return false;  // a scan's own entries always check out
            index = LogIndex::scan(log);
        }
    }
    return true;
}

boost::shared_ptr<EngineOutputData> FrameRangeReader::readData() {
    EOD_REQUIRE(_mode != Mode::CLOSED, "files are not open");
    if (_mode == Mode::OPEN) start();
    if (_mode == Mode::SEARCH) return readSearched();
    while (boost::shared_ptr<EngineOutputData> frame = _all.readData()) {
        if (frame->frameNum() >= _first && frame->frameNum() <= _last) return frame;
    }
    return boost::shared_ptr<EngineOutputData>();
}

boost::shared_ptr<EngineOutputData> FrameRangeReader::readSearched() {
    bool any = false;
    unsigned int frame = std::numeric_limits<unsigned int>::max();
    for (const auto& stream : _streams) {
        // The full merge passes over records that hold no sub-object.
        while (stream->current() && stream->current()->numSubObjects() == 0) stream->advance();
        if (const boost::shared_ptr<EngineOutputData>& next = stream->current()) {
            frame = std::min(frame, next->frameNum());
            any = true;
        }
    }
    if (!any) {
        for (const auto& stream : _streams) stream->throwTornTail();
        return boost::shared_ptr<EngineOutputData>();
    }
    // Every log is in ascending order: nothing after this belongs to the range.
    if (frame > _last) return boost::shared_ptr<EngineOutputData>();
    boost::shared_ptr<EngineOutputData> result = boost::make_shared<EngineOutputData>();
    result->setFrameNum(frame);
    for (const auto& stream : _streams) {
        const boost::shared_ptr<EngineOutputData>& next = stream->current();
        if (!next || next->frameNum() != frame) continue;
        for (const boost::shared_ptr<Serializable>& sub : next->subObjects()) {
            if (!dynamic_cast<const EngineOutputBase*>(sub.get())) {
                throw EngineOutputDataFileError(
                    "FrameRangeReader::readData() - invalid sub-object");
            }
            next->removeSubObject(*sub);
            result->insertSubObject(sub);
        }
        stream->advance();
    }
    return result;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
