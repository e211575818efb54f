// DecompressingFileReader over a fuzzed container file: every frame read to the end the way
// a caller that goes on after errors does, then seeks to a few frames the index or the walk
// of the key points names.

#include <eod/io/compress/decompressingfilereader.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "fuzz/fuzzing.h"

using tq::eod::EngineOutputData;
using tq::eod::io::DecompressingFileReader;

namespace {

// One file for the whole run, in memory where the system offers it.
const std::string& path() {
    static const std::string p = [] {
        std::string pattern =
            (::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/eodcXXXXXX");
        const int fd = ::mkstemp(&pattern[0]);
        EOD_FUZZ_EXPECT(fd >= 0);
        ::close(fd);
        return pattern;
    }();
    static const bool cleanup = std::atexit([] { ::unlink(path().c_str()); }) == 0;
    (void)cleanup;
    return p;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    {
        std::ofstream out(path(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        EOD_FUZZ_EXPECT(out.good());
    }
    DecompressingFileReader reader;
    if (!eodfuzz::allowingLibraryErrors([&] { reader.open(path()); })) return 0;
    // Every error uses up at least one item (of at least 8 bytes), and an item holds at most
    // one group of frames: a reader that threw the same error again and again never ends.
    const std::size_t max_items = size / 8 + 2;
    std::size_t errors = 0;
    for (std::size_t calls = 0;; ++calls) {
        EOD_FUZZ_EXPECT(errors <= max_items && calls <= max_items * 4097);
        boost::shared_ptr<EngineOutputData> frame;
        if (!eodfuzz::allowingLibraryErrors([&] { frame = reader.readFrame(); })) {
            ++errors;
            continue;
        }
        if (!frame) break;
        eodfuzz::checkUsable(*frame, true);
    }
    std::uint32_t frames = 0;
    if (!eodfuzz::allowingLibraryErrors([&] { frames = reader.numFrames(); })) return 0;
    for (std::uint32_t ordinal : {0u, frames / 2, frames - 1}) {
        if (ordinal >= frames) continue;
        eodfuzz::allowingLibraryErrors([&] {
            reader.seekToFrame(ordinal);
            if (auto frame = reader.readFrame()) eodfuzz::checkUsable(*frame, true);
        });
    }
    return 0;
}
