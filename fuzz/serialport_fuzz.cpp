// SerialPort::receiveDatagramNoThrow over a pseudo-terminal whose other side holds the
// fuzzed bytes. The port must find exactly the frames, CRC failures and end of data that
// a plain reading of the frame rules finds in the same bytes.

#include <eod/io/serialport.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fuzz/fuzzing.h"

using eodfuzz::Bytes;
using tq::eod::io::BAUD_115200;
using tq::eod::io::SerialPort;

namespace {

// A pseudo-terminal takes some 20 KB before a writer blocks; inputs stay well below.
const std::size_t kMaxInput = 8192;

const unsigned char kMarkerFirst = 0xAA;
const unsigned char kMarkerSecond = 0x55;

// Each call's result: 0 and the payload, or the error code and nothing.
using Result = std::pair<unsigned long, Bytes>;

// The frame rules read straight from the bytes: skip to a start marker (the byte after a
// 0xAA is consumed unexamined), collect unstuffed bytes up to the end marker, start again
// when that frame is empty, and check the CRC. The end of the bytes is a time-out.
std::vector<Result> framesByTheRules(const Bytes& line) {
    std::vector<Result> results;
    std::size_t pos = 0;
    const auto next = [&](unsigned char& b) {
        if (pos == line.size()) return false;
        b = line[pos++];
        return true;
    };
    for (;;) {
        unsigned char b = 0;
        bool started = false;
        while (!started && next(b)) {
            if (b == kMarkerFirst) {
                if (!next(b)) break;
                started = b == kMarkerSecond;
            }
        }
        Bytes frame;
        while (started && frame.empty()) {
            for (;;) {
                if (!next(b)) {
                    started = false;
                    break;
                }
                if (b != kMarkerFirst) {
                    frame.push_back(b);
                    continue;
                }
                if (!next(b)) {
                    started = false;
                    break;
                }
                if (b == kMarkerSecond) break;
                frame.push_back(kMarkerFirst);
            }
        }
        if (!started) {
            results.emplace_back(ETIMEDOUT, Bytes());
            return results;
        }
        if (frame.size() < 2 || !SerialPort::checkCRC(frame)) {
            results.emplace_back(SerialPort::ERROR_CRC, Bytes());
        } else {
            results.emplace_back(0, Bytes(frame.begin(), frame.end() - 2));
        }
    }
}

void writeAll(int fd, const Bytes& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        EOD_FUZZ_EXPECT(n > 0);
        done += static_cast<std::size_t>(n);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes line(data, data + std::min(size, kMaxInput));
    int master = -1;
    int slave = -1;
    char name[128];
    EOD_FUZZ_EXPECT(::openpty(&master, &slave, name, nullptr, nullptr) == 0);

    std::vector<Result> results;
    {
        SerialPort port(name, BAUD_115200, false);
        // No wait for a byte: everything is on the line before the first read, so the
        // first time-out is the end of the bytes.
        EOD_FUZZ_EXPECT(port.openNoThrow(true, 0) == 0);
        writeAll(master, line);
        for (;;) {
            Bytes payload;
            int payload_size = -1;
            const unsigned long e = port.receiveDatagramNoThrow(payload, false, payload_size);
            EOD_FUZZ_EXPECT(payload_size == static_cast<int>(payload.size()));
            results.emplace_back(e, payload);
            if (e != 0 && e != SerialPort::ERROR_CRC) break;
        }
    }
    ::close(slave);
    ::close(master);
    EOD_FUZZ_EXPECT(results == framesByTheRules(line));
    return 0;
}
