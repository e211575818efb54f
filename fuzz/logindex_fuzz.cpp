// The index reader (LogIndex) and the frame-range reader over a fuzzed index beside a sound
// log: whatever the index says, a range read returns exactly the frames the full merge
// returns in that range.
//
// Input: one byte of flags (bit 0: the log's frame numbers go back once; bit 1: make the
// index's checksums agree with its bytes and with the log, so that lying fields get past
// them), two 1-byte frame numbers that bound the range, then the index file's bytes.

#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/index/framerangereader.h>
#include <eod/io/index/logindex.h>
#include <eod/timingoutputdata.h>

#include "eod/io/index/detail/indexformat.h"
#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using namespace tq::eod;
using namespace tq::eod::io;

namespace {

const std::string& directory();

std::string logPath(bool backwards) { return directory() + (backwards ? "/B.tql" : "/A.tql"); }

void removeDirectory() {
    for (const char* name : {"/A.tql", "/B.tql", "/A.itql", "/B.itql"}) {
        ::unlink((directory() + name).c_str());
    }
    ::rmdir(directory().c_str());
}

void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    EOD_FUZZ_EXPECT(out.good());
}

// Two logs of 36-byte timing frames: frame numbers 0..49 with 10 twice and 20 missing, and
// the same with 30 moved in front of 29.
Bytes logBytes(bool backwards) {
    Bytes bytes;
    for (unsigned int n = 0; n < 50; ++n) {
        if (n == 20) continue;
        unsigned int number = n;
        if (backwards && (n == 29 || n == 30)) number = n == 29 ? 30 : 29;
        for (int copies = n == 10 ? 2 : 1; copies > 0; --copies) {
            EngineOutputData frame;
            frame.setFrameNum(number);
            boost::shared_ptr<TimingOutputData> timing(new TimingOutputData());
            timing->setExperimentTime(number / 60.0);
            frame.addSubObject(timing);
            frame.serialize(bytes);
        }
    }
    return bytes;
}

const std::string& directory() {
    static const std::string dir = eodfuzz::makeScratchDirectory();
    static const bool ready = [] {
        writeFile(dir + "/A.tql", logBytes(false));
        writeFile(dir + "/B.tql", logBytes(true));
        return std::atexit(removeDirectory) == 0;
    }();
    (void)ready;
    return dir;
}

// Header and entry checksums recomputed over the fuzzed fields, edge checksum over the log.
void makeChecksumsAgree(Bytes& index, const std::string& log_path) {
    if (index.size() < io::detail::INDEX_HEADER_SIZE) return;
    const std::uint64_t covered = io::detail::loadU64(index.data() + 8);
    std::ifstream log(log_path, std::ios::binary);
    std::uint32_t edge = 0;
    if (io::detail::edgeChecksum(log, covered, edge)) io::detail::storeU32(index.data() + 16, edge);
    const std::uint64_t count = io::detail::loadU64(index.data() + 20);
    const std::size_t held = (index.size() - io::detail::INDEX_HEADER_SIZE) / io::detail::INDEX_ENTRY_SIZE;
    if (count <= held) {
        io::detail::storeU32(index.data() + 28,
                         io::detail::crc32Of(0, index.data() + io::detail::INDEX_HEADER_SIZE,
                                         static_cast<std::size_t>(count) * io::detail::INDEX_ENTRY_SIZE));
    }
    index[0] = 'T', index[1] = 'Q', index[2] = 'I', index[3] = 'X', index[4] = 0, index[5] = 1;
    io::detail::storeU32(index.data() + 32, io::detail::crc32Of(0, index.data(), 32));
}

std::vector<Bytes> fullMerge(const std::string& log, unsigned int first, unsigned int last) {
    EngineOutputDataFileReader reader;
    reader.openFile(log);
    std::vector<Bytes> frames;
    while (auto frame = reader.readData()) {
        if (frame->frameNum() >= first && frame->frameNum() <= last) frames.push_back(eodfuzz::encode(*frame));
    }
    return frames;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const bool backwards = data[0] & 1;
    const unsigned int first = std::min(data[1], data[2]), last = std::max(data[1], data[2]);
    const std::string log = logPath(backwards);
    Bytes index(data + 3, data + size);
    if (data[0] & 2) makeChecksumsAgree(index, log);
    writeFile(logIndexPath(log), index);

    // A scan finds the 50 records; an index file believed whole holds offsets that rise
    // from 0 within the log and tells the truth about its order.
    const LogIndex verified = LogIndex::openVerified(log);
    if (verified.origin() == LogIndex::Origin::SCAN) EOD_FUZZ_EXPECT(verified.size() == 50);
    for (std::size_t i = 0; i < verified.size(); ++i) {
        EOD_FUZZ_EXPECT(verified.entry(i).offset < verified.logSize());
        EOD_FUZZ_EXPECT(i == 0 || verified.entry(i).offset > verified.entry(i - 1).offset);
        EOD_FUZZ_EXPECT(!verified.monotonic() || i == 0 ||
                        verified.entry(i).frame_num >= verified.entry(i - 1).frame_num);
    }
    const LogIndex opened = LogIndex::open(log);
    EOD_FUZZ_EXPECT(opened.lowerBound(first) <= opened.size());

    FrameRangeReader reader;
    reader.open(log);
    reader.setRange(first, last);
    std::vector<Bytes> frames;
    while (auto frame = reader.readData()) frames.push_back(eodfuzz::encode(*frame));
    EOD_FUZZ_EXPECT(frames == fullMerge(log, first, last));
    return 0;
}
