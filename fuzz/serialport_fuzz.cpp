// SerialPort::receiveDatagramNoThrow over a pseudo-terminal whose other side holds the
// fuzzed bytes. The port, reading byte by byte with time-outs, must find exactly the frames,
// CRC failures and end of data that the frame decoder finds in the same bytes at once.

#include <eod/io/serialframecodec.h>
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
using tq::eod::io::SerialFrameDecoder;
using tq::eod::io::SerialPort;

namespace {

// A pseudo-terminal takes some 20 KB before a writer blocks; inputs stay well below.
const std::size_t kMaxInput = 8192;

// Each call's result: 0 and the payload, or the error code and nothing.
using Result = std::pair<unsigned long, Bytes>;

// The frames the codec finds in the same bytes; the end of the bytes is a time-out.
std::vector<Result> framesOfTheCodec(const Bytes& line) {
    std::vector<Result> results;
    SerialFrameDecoder decoder;
    for (unsigned char byte : line) {
        switch (decoder.push(byte)) {
            case SerialFrameDecoder::DATAGRAM:
                results.emplace_back(0, decoder.payload());
                break;
            case SerialFrameDecoder::CRC_ERROR:
                results.emplace_back(SerialPort::ERROR_CRC, Bytes());
                break;
            case SerialFrameDecoder::NEED_MORE:
                break;
        }
    }
    results.emplace_back(ETIMEDOUT, Bytes());
    return results;
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
    EOD_FUZZ_EXPECT(results == framesOfTheCodec(line));
    return 0;
}
