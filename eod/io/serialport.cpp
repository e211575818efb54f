#include <eod/io/serialport.h>

#include <eod/io/serialframecodec.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>

#include "eod/io/detail/arbitrarylinerate.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

// Start bit, 8 data bits, parity and up to two stop bits: an upper bound per byte.
const long BITS_PER_BYTE_ON_LINE = 11;

struct StandardRate {
    unsigned int bits_per_second;
    speed_t flag;
};

const StandardRate STANDARD_RATES[] = {
    {110, B110},     {300, B300},     {600, B600},       {1200, B1200},
    {2400, B2400},   {4800, B4800},   {9600, B9600},     {19200, B19200},
    {38400, B38400}, {57600, B57600}, {115200, B115200},
};

unsigned long configureLine(int fd, unsigned int bits_per_second, unsigned char parity,
                            unsigned char stop_bits) {
    termios line;
    if (::tcgetattr(fd, &line) != 0) {
        return errno;
    }
    ::cfmakeraw(&line);
    line.c_iflag &= ~(IXOFF | IXANY | INPCK | IGNPAR);
    line.c_cflag &= ~(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
    // CLOCAL: a binary link without modem control must not wait for or hang up on DCD.
    line.c_cflag |= CS8 | CREAD | CLOCAL;
    switch (parity) {
        case ODDPARITY:
            line.c_cflag |= PARENB | PARODD;
            break;
        case EVENPARITY:
            line.c_cflag |= PARENB;
            break;
        case MARKPARITY:
            line.c_cflag |= PARENB | CMSPAR | PARODD;
            break;
        case SPACEPARITY:
            line.c_cflag |= PARENB | CMSPAR;
            break;
        default:
            break;
    }
    if (parity != NOPARITY) {
        // A byte with a parity error is dropped rather than delivered as 0x00 or marked:
        // the frame's CRC then rejects the frame it belonged to.
        line.c_iflag |= INPCK | IGNPAR;
    }
    if (stop_bits != ONESTOPBIT) {
        line.c_cflag |= CSTOPB;
    }
    line.c_cc[VMIN] = 1;
    line.c_cc[VTIME] = 0;
    const StandardRate* standard = nullptr;
    for (const StandardRate& rate : STANDARD_RATES) {
        if (rate.bits_per_second == bits_per_second) {
            standard = &rate;
        }
    }
    if (standard != nullptr &&
        (::cfsetispeed(&line, standard->flag) != 0 || ::cfsetospeed(&line, standard->flag) != 0)) {
        return errno;
    }
    if (::tcsetattr(fd, TCSANOW, &line) != 0) {
        return errno;
    }
    return standard != nullptr ? 0 : detail::setArbitraryLineRate(fd, bits_per_second);
}

// 0 once fd is ready for `events` (or has an error or hang-up for the next call to report),
// ETIMEDOUT when the deadline passes first.
unsigned long waitUntil(int fd, short events, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd p{fd, events, 0};
        const int n = ::poll(&p, 1, static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX)));
        if (n > 0) {
            return 0;
        }
        if (n == 0) {
            return ETIMEDOUT;
        }
        if (errno != EINTR) {
            return errno;
        }
    }
}

// Reads what is there, up to n bytes; waits until the deadline when nothing is. A read of 0
// bytes from a terminal is a hang-up, reported as EIO so that callers do not spin on it.
unsigned long readSome(int fd, unsigned char* p, std::size_t n, Clock::time_point deadline,
                       std::size_t& got) {
    for (;;) {
        const ssize_t r = ::read(fd, p, n);
        if (r > 0) {
            got = static_cast<std::size_t>(r);
            return 0;
        }
        if (r == 0) {
            return EIO;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN) {
            return errno;
        }
        if (const unsigned long e = waitUntil(fd, POLLIN, deadline)) {
            return e;
        }
    }
}

std::string describe(unsigned long code) {
    if (code == SerialPort::ERROR_CRC) {
        return "Data error (cyclic redundancy check).";
    }
    if (code == ETIMEDOUT) {
        return "Timed out.";
    }
    return std::strerror(static_cast<int>(code));
}

void throwIfFailed(unsigned long code, const char* message) {
    if (code != 0) {
        throw SerialPortError(std::string(message) + ": " + describe(code),
                              SerialPort::isTimeout(code));
    }
}

}  // namespace

SerialPort::SerialPort(ComPortID port_id, BaudRate baud_rate, bool exclusive, unsigned char parity,
                       unsigned char stop_bits)
    : SerialPort(devicePath(port_id), baud_rate, exclusive, parity, stop_bits) {}

SerialPort::SerialPort(const std::string& device_path, BaudRate baud_rate, bool exclusive,
                       unsigned char parity, unsigned char stop_bits)
    : _device(device_path),
      _bits_per_second(baudRateFlag(baud_rate)),
      _exclusive(exclusive),
      _parity(parity),
      _stop_bits(stop_bits) {
    EOD_REQUIRE(parity <= SPACEPARITY, "parity outside the range NOPARITY..SPACEPARITY");
    EOD_REQUIRE(stop_bits <= TWOSTOPBITS, "stop_bits outside thet range ONESTOPBIT..TWOSTOPBITS");
}

SerialPort::~SerialPort() { close(); }

std::string SerialPort::portName(ComPortID port_id) {
    EOD_REQUIRE(port_id >= COM1 && port_id < NUM_PORTS, "post_id outside the range 0..NUM_PORTS-1");
    return "COM" + std::to_string(port_id + 1);
}

std::string SerialPort::devicePath(ComPortID port_id) {
    EOD_REQUIRE(port_id >= COM1 && port_id < NUM_PORTS, "post_id outside the range 0..NUM_PORTS-1");
    return "/dev/ttyS" + std::to_string(static_cast<int>(port_id));
}

unsigned int SerialPort::baudRateFlag(BaudRate baud_rate) {
    switch (baud_rate) {
        case BAUD_14400:
            return 14400;
        case BAUD_110:
        case BAUD_300:
        case BAUD_600:
        case BAUD_1200:
        case BAUD_2400:
        case BAUD_4800:
        case BAUD_9600:
        case BAUD_19200:
        case BAUD_38400:
        case BAUD_57600:
        case BAUD_115200:
        case BAUD_128000:
            return static_cast<unsigned int>(baud_rate);
    }
    EOD_USAGE_ERROR("unknown baud rate");
}

unsigned short SerialPort::makeCRC(const std::vector<unsigned char>& data) {
    return SerialFrameCodec::crc(data);
}

bool SerialPort::checkCRC(const std::vector<unsigned char>& data) {
    EOD_REQUIRE(data.size() >= 2, "data should contain at least two checksum bytes");
    return SerialFrameCodec::hasValidCrc(data);
}

bool SerialPort::isTimeout(unsigned long error_code) { return error_code == ETIMEDOUT; }

bool SerialPort::isOpen(ComPortID port_id) { return isOpen(devicePath(port_id)); }

bool SerialPort::isOpen(const std::string& device_path) {
    const int fd = ::open(device_path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    // Closing the probe releases its lock at once.
    const bool unclaimed = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    ::close(fd);
    return unclaimed;
}

const std::string& SerialPort::device() const { return _device; }

void SerialPort::open(bool purge, int read_timeout_ms) {
    if (openNoThrow(purge, read_timeout_ms) != 0) {
        throw SerialPortError("SerialPort::open() - Error opening port", false);
    }
}

unsigned long SerialPort::openNoThrow(bool purge, int read_timeout_ms) {
    setReadTimeoutMillis(read_timeout_ms);
    close();
    // Non-blocking: every wait is a poll() with the port's time-out, never a blocked read.
    _fd = ::open(_device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (_fd < 0) {
        _last_error = errno;
        return _last_error;
    }
    if (_exclusive) {
        // TIOCEXCL keeps other programs out (but not root); the flock() claim also stops
        // root and other SerialPorts of this process, which probe it the same way.
        if (::ioctl(_fd, TIOCEXCL) != 0) {
            return saveSystemErrorAndClose();
        }
        if (::flock(_fd, LOCK_EX | LOCK_NB) != 0) {
            errno = errno == EWOULDBLOCK ? EBUSY : errno;
            return saveSystemErrorAndClose();
        }
    }
    if (const unsigned long e = configureLine(_fd, _bits_per_second, _parity, _stop_bits)) {
        errno = static_cast<int>(e);
        return saveSystemErrorAndClose();
    }
    if (purge && ::tcflush(_fd, TCIOFLUSH) != 0) {
        return saveSystemErrorAndClose();
    }
    return 0;
}

unsigned long SerialPort::saveSystemErrorAndClose() {
    _last_error = errno;
    close();
    return _last_error;
}

bool SerialPort::isOpen() const { return _fd >= 0; }

void SerialPort::close() {
    if (_fd < 0) {
        return;
    }
    if (_exclusive) {
        // Exclusive mode belongs to the terminal, not to this descriptor: lift it so that
        // the next open succeeds even while some other descriptor keeps the terminal alive.
        ::ioctl(_fd, TIOCNXCL);
    }
    ::close(_fd);
    _fd = -1;
}

void SerialPort::reset() {
    EOD_REQUIRE(isOpen(), "reset() called on non-open serial port");
    throwIfFailed(::tcflush(_fd, TCIOFLUSH) == 0 ? 0 : errno,
                  "SerialPort::reset() - Error purging port");
}

void SerialPort::flush() {
    EOD_REQUIRE(isOpen(), "flush() called on non-open serial port");
    throwIfFailed(::tcdrain(_fd) == 0 ? 0 : errno, "SerialPort::flush() - Error flushing port");
}

unsigned long SerialPort::lastSystemError() const { return _last_error; }

void SerialPort::setReadTimeoutMillis(int timeout_ms) {
    EOD_REQUIRE(timeout_ms >= 0, "timeout_ms is negative");
    _read_timeout_ms = timeout_ms;
}

int SerialPort::readTimeoutMillis() const { return _read_timeout_ms; }

void SerialPort::setWriteTimeoutMillis(int timeout_ms) {
    EOD_REQUIRE(timeout_ms >= 0, "timeout_ms is negative");
    _write_timeout_ms = timeout_ms;
}

int SerialPort::writeTimeoutMillis() const { return _write_timeout_ms; }

void SerialPort::write(const std::vector<unsigned char>& bytes) const {
    throwIfFailed(writeNoThrow(bytes), "SerialPort::write() - Error writing to port");
}

unsigned long SerialPort::writeNoThrow(const std::vector<unsigned char>& bytes) const {
    if (_fd < 0) {
        return EBADF;
    }
    const long line_ms =
        static_cast<long>(bytes.size()) * BITS_PER_BYTE_ON_LINE * 1000 / _bits_per_second;
    const Clock::time_point deadline =
        Clock::now() + std::chrono::milliseconds(_write_timeout_ms + line_ms);
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n = ::write(_fd, bytes.data() + sent, bytes.size() - sent);
        if (n > 0) {
            sent += static_cast<std::size_t>(n);
        } else if (n < 0 && errno != EINTR && errno != EAGAIN) {
            return errno;
        } else if (const unsigned long e = waitUntil(_fd, POLLOUT, deadline)) {
            return e;
        }
    }
    return 0;
}

char SerialPort::read() const {
    unsigned char byte = 0;
    throwIfFailed(readNoThrow(byte), "SerialPort::read() - Error reading from port");
    return static_cast<char>(byte);
}

unsigned long SerialPort::readNoThrow(unsigned char& byte) const {
    if (_fd < 0) {
        return EBADF;
    }
    std::size_t got = 0;
    return readSome(_fd, &byte, 1, Clock::now() + std::chrono::milliseconds(_read_timeout_ms), got);
}

void SerialPort::read(std::vector<unsigned char>& out, int count, bool append) const {
    throwIfFailed(readNoThrow(out, count, append), "SerialPort::read() - Error reading from port");
}

unsigned long SerialPort::readNoThrow(std::vector<unsigned char>& out, int count,
                                      bool append) const {
    EOD_REQUIRE(count >= 0, "count is negative");
    if (_fd < 0) {
        return EBADF;
    }
    Bytes bytes(static_cast<std::size_t>(count));
    std::size_t total = 0;
    while (total < bytes.size()) {
        std::size_t got = 0;
        const Clock::time_point deadline =
            Clock::now() + std::chrono::milliseconds(_read_timeout_ms);
        if (const unsigned long e =
                readSome(_fd, bytes.data() + total, bytes.size() - total, deadline, got)) {
            return e;
        }
        total += got;
    }
    if (!append) {
        out.clear();
    }
    out.insert(out.end(), bytes.begin(), bytes.end());
    return 0;
}

void SerialPort::sendDatagram(const std::vector<unsigned char>& payload) const {
    throwIfFailed(sendDatagramNoThrow(payload),
                  "SerialPort::sendDatagram() - Error sending datagram");
}

unsigned long SerialPort::sendDatagramNoThrow(const std::vector<unsigned char>& payload) const {
    return writeNoThrow(SerialFrameCodec::frame(payload));
}

int SerialPort::receiveDatagram(std::vector<unsigned char>& out, bool append) const {
    int size = 0;
    throwIfFailed(receiveDatagramNoThrow(out, append, size),
                  "SerialPort::receiveDatagram() - Error receiving datagram");
    return size;
}

unsigned long SerialPort::receiveDatagramNoThrow(std::vector<unsigned char>& out, bool append,
                                                 int& size) const {
    size = 0;
    if (!append) {
        out.clear();
    }
    if (const unsigned long e = skipUntilFrameMarker()) {
        return e;
    }
    Bytes frame;
    // An empty frame is an end marker followed at once by the next start marker: the search
    // began between two frames, and the second marker starts the frame.
    do {
        if (const unsigned long e = readUntilFrameMarker(frame)) {
            return e;
        }
    } while (frame.empty());
    // A single byte between markers cannot even hold a CRC: line noise, not a call error.
    if (!SerialFrameCodec::hasValidCrc(frame)) {
        return ERROR_CRC;
    }
    out.insert(out.end(), frame.begin(), frame.end() - 2);
    size = static_cast<int>(frame.size() - 2);
    return 0;
}

unsigned long SerialPort::skipUntilFrameMarker() const {
    SerialFrameCodec::MarkerSearch search;
    unsigned char byte = 0;
    do {
        if (const unsigned long e = readNoThrow(byte)) {
            return e;
        }
    } while (!search.push(byte));
    return 0;
}

unsigned long SerialPort::readUntilFrameMarker(std::vector<unsigned char>& out) const {
    SerialFrameCodec::Unstuffer body;
    unsigned char byte = 0;
    do {
        if (const unsigned long e = readNoThrow(byte)) {
            return e;
        }
    } while (!body.push(byte, out));
    return 0;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
