// EngineOutputDataFileReader over a directory of fuzzed log files, replayed to the end the
// way a caller that reads on past damaged records does.
//
// Input: one byte of flags (bits 0-1: one to four files; bit 2: merge only the object id
// in the next byte), that byte, then each file as a 2-byte big-endian length and its bytes
// (the last file takes whatever is left).

#include <eod/io/engineoutputdatafilereader.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::EngineOutputData;
using tq::eod::io::EngineOutputDataFileReader;

namespace {

const char* const kFileNames[] = {"Timing.tql", "HeadV2.tql", "FaceV2.tql", "EngineState.tql"};
const std::size_t kMaxFiles = sizeof kFileNames / sizeof *kFileNames;

const std::string& directory();

void removeDirectory() {
    for (const char* name : kFileNames) ::unlink((directory() + "/" + name).c_str());
    ::rmdir(directory().c_str());
}

// One directory for the whole run, in memory where the system offers it; removed when the
// run ends (a crash leaves it with the files of the input that crashed).
const std::string& directory() {
    static const std::string dir = eodfuzz::makeScratchDirectory();
    static const bool cleanup_registered = std::atexit(removeDirectory) == 0;
    (void)cleanup_registered;
    return dir;
}

void writeFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    EOD_FUZZ_EXPECT(out.good());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::size_t num_files = 1 + (data[0] & 3);
    const bool filtered = data[0] & 4;
    const char merge_id = static_cast<char>(data[1]);
    std::size_t pos = 2;
    for (std::size_t i = 0; i < kMaxFiles; ++i) {
        const std::string path = directory() + "/" + kFileNames[i];
        ::unlink(path.c_str());
        if (i >= num_files) continue;
        std::size_t n = size - pos;
        if (i + 1 < num_files && n >= 2) {
            n = std::min<std::size_t>((std::size_t(data[pos]) << 8 | data[pos + 1]), n - 2);
            pos += 2;
        }
        writeFile(path, data + pos, n);
        pos += n;
    }

    EngineOutputDataFileReader reader;
    if (filtered) {
        reader.openFiles(std::vector<char>{merge_id}, directory());
    } else {
        reader.openFiles(directory());
    }
    // Every call uses up at least one byte of some file, reports a file's torn tail once,
    // or ends the replay: a reader that threw the same error again and again would never end.
    const std::size_t max_calls = size + kMaxFiles + 1;
    for (std::size_t calls = 0;; ++calls) {
        EOD_FUZZ_EXPECT(calls <= max_calls);
        boost::shared_ptr<EngineOutputData> frame;
        if (!eodfuzz::allowingLibraryErrors([&] { frame = reader.readData(); })) continue;
        if (!frame) break;
        eodfuzz::checkUsable(*frame, true);
    }
    EOD_FUZZ_EXPECT(reader.endOfData());
    return 0;
}
