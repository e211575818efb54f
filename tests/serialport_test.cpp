// The serial port against a real pseudo-terminal: the port opens the slave side, the test
// plays the remote device on the master side.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <eod/io/serialport.h>

#include "nettesthelpers.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;
using Bytes = std::vector<unsigned char>;
using eodtest::concat;

namespace {

const char* const kModule = "io/serialport";

// The frame the remote device would send, built independently of the port.
Bytes frameOf(const Bytes& payload) {
    const unsigned short crc = SerialPort::makeCRC(payload);
    Bytes body = payload;
    body.push_back(static_cast<unsigned char>(crc >> 8));
    body.push_back(static_cast<unsigned char>(crc & 0xFF));
    Bytes frame{0xAA, 0x55};
    for (unsigned char b : body) {
        frame.push_back(b);
        if (b == 0xAA) {
            frame.push_back(0x00);
        }
    }
    frame.push_back(0xAA);
    frame.push_back(0x55);
    return frame;
}

class PseudoTerminal : public ::testing::Test {
protected:
    void SetUp() override {
        char name[128];
        ASSERT_EQ(::openpty(&_master, &_slave, name, nullptr, nullptr), 0) << std::strerror(errno);
        _path = name;
        ::fcntl(_master, F_SETFL, ::fcntl(_master, F_GETFL) | O_NONBLOCK);
    }
    void TearDown() override {
        ::close(_master);
        ::close(_slave);
    }

    // Plays the remote device: bytes onto the line towards the port.
    void send(const Bytes& bytes) {
        ASSERT_EQ(::write(_master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // The next n bytes the port put on the line (fewer if they do not come within 5 s).
    Bytes receive(std::size_t n) {
        Bytes got;
        while (got.size() < n) {
            pollfd p{_master, POLLIN, 0};
            if (::poll(&p, 1, 5000) != 1) {
                break;
            }
            unsigned char chunk[4096];
            const ssize_t r = ::read(_master, chunk, std::min(sizeof chunk, n - got.size()));
            if (r <= 0) {
                break;
            }
            got.insert(got.end(), chunk, chunk + r);
        }
        return got;
    }

    // Waits until n bytes sent by the remote device are queued at the port's side.
    void awaitQueued(int n) {
        for (int i = 0; i < 5000; ++i) {
            int queued = 0;
            ::ioctl(_slave, FIONREAD, &queued);
            if (queued >= n) {
                return;
            }
            ::usleep(1000);
        }
        FAIL() << "bytes never reached the port";
    }

    termios lineSettings() {
        termios line{};
        EXPECT_EQ(::tcgetattr(_slave, &line), 0);
        return line;
    }

    int _master = -1;
    int _slave = -1;
    std::string _path;
};

class OpenPort : public PseudoTerminal {
protected:
    void SetUp() override {
        PseudoTerminal::SetUp();
        _port.reset(new SerialPort(_path, BAUD_115200));
        ASSERT_EQ(_port->openNoThrow(true, 5000), 0u);
    }
    void TearDown() override {
        _port.reset();
        PseudoTerminal::TearDown();
    }

    Bytes receiveDatagram() {
        Bytes out;
        const int size = _port->receiveDatagram(out, false);
        EXPECT_EQ(size, static_cast<int>(out.size()));
        return out;
    }

    std::unique_ptr<SerialPort> _port;
};

}  // namespace

TEST(SerialPortCrc, KnownAnswersAndCheck) {
    const std::string text = "123456789";
    EXPECT_EQ(SerialPort::makeCRC(Bytes(text.begin(), text.end())), 0x31C3);
    EXPECT_EQ(SerialPort::makeCRC(Bytes{}), 0x0000);

    Bytes data(text.begin(), text.end());
    data.push_back(0x31);
    data.push_back(0xC3);
    EXPECT_TRUE(SerialPort::checkCRC(data));
    for (std::size_t i = 0; i < data.size(); ++i) {
        SCOPED_TRACE(i);
        Bytes bad = data;
        bad[i] ^= 0x01;
        EXPECT_FALSE(SerialPort::checkCRC(bad));
    }
    EXPECT_TRUE(SerialPort::checkCRC(Bytes{0x00, 0x00}));
    EXPECT_USAGE_ERROR(SerialPort::checkCRC(Bytes{0x00}), kModule,
                       "data should contain at least two checksum bytes");
}

TEST(SerialPortSettings, BaudRateFlags) {
    const struct {
        BaudRate rate;
        unsigned int flag;
    } cases[] = {{BAUD_110, 110},      {BAUD_300, 300},     {BAUD_600, 600},
                 {BAUD_1200, 1200},    {BAUD_2400, 2400},   {BAUD_4800, 4800},
                 {BAUD_9600, 9600},    {BAUD_14400, 14400}, {BAUD_19200, 19200},
                 {BAUD_38400, 38400},  {BAUD_57600, 57600}, {BAUD_115200, 115200},
                 {BAUD_128000, 128000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flag);
        EXPECT_EQ(SerialPort::baudRateFlag(c.rate), c.flag);
    }
    EXPECT_EQ(static_cast<int>(BAUD_14400), 14000);
    for (int bad : {14400, 0, 100, 230400}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(SerialPort::baudRateFlag(static_cast<BaudRate>(bad)), kModule,
                           "unknown baud rate");
    }
}

TEST(SerialPortSettings, PortNamesAndDevices) {
    for (int i = 0; i < NUM_PORTS; ++i) {
        SCOPED_TRACE(i);
        const ComPortID id = static_cast<ComPortID>(i);
        EXPECT_EQ(SerialPort::portName(id), "COM" + std::to_string(i + 1));
        EXPECT_EQ(SerialPort::devicePath(id), "/dev/ttyS" + std::to_string(i));
    }
    for (int bad : {-1, NUM_PORTS}) {
        SCOPED_TRACE(bad);
        const ComPortID id = static_cast<ComPortID>(bad);
        const std::string reason = "post_id outside the range 0..NUM_PORTS-1";
        EXPECT_USAGE_ERROR(SerialPort::portName(id), kModule, reason);
        EXPECT_USAGE_ERROR(SerialPort::devicePath(id), kModule, reason);
        EXPECT_USAGE_ERROR(SerialPort port(id, BAUD_9600), kModule, reason);
    }
}

TEST(SerialPortSettings, ConstructorChecksAndDoesNotOpen) {
    const std::string nowhere = "/nonexistent/tty";
    EXPECT_USAGE_ERROR(SerialPort(nowhere, static_cast<BaudRate>(14400)), kModule,
                       "unknown baud rate");
    EXPECT_USAGE_ERROR(SerialPort(nowhere, BAUD_9600, true, 5), kModule,
                       "parity outside the range NOPARITY..SPACEPARITY");
    EXPECT_USAGE_ERROR(SerialPort(nowhere, BAUD_9600, true, NOPARITY, 3), kModule,
                       "stop_bits outside thet range ONESTOPBIT..TWOSTOPBITS");
    const SerialPort port(COM10, BAUD_9600, false, SPACEPARITY, TWOSTOPBITS);
    EXPECT_FALSE(port.isOpen());
    EXPECT_EQ(port.device(), "/dev/ttyS9");
}

TEST(SerialPortErrors, ErrorClassAndTimeoutCodes) {
    const SerialPortError timeout("abc", true);
    EXPECT_STREQ(timeout.what(), "abc");
    EXPECT_STREQ(timeout.className(), "SerialPortError");
    EXPECT_TRUE(timeout.timeout());
    EXPECT_FALSE(SerialPortError("abc", false).timeout());
    const EODError& root = timeout;
    EXPECT_STREQ(root.className(), "SerialPortError");

    EXPECT_TRUE(SerialPort::isTimeout(ETIMEDOUT));
    for (unsigned long code : {0ul, SerialPort::ERROR_CRC, static_cast<unsigned long>(EIO)}) {
        SCOPED_TRACE(code);
        EXPECT_FALSE(SerialPort::isTimeout(code));
    }
}

TEST(SerialPortErrors, OpenFailures) {
    SerialPort missing("/nonexistent/tty", BAUD_9600);
    EXPECT_EQ(missing.openNoThrow(), static_cast<unsigned long>(ENOENT));
    EXPECT_EQ(missing.lastSystemError(), static_cast<unsigned long>(ENOENT));
    EXPECT_FALSE(missing.isOpen());
    try {
        missing.open();
        ADD_FAILURE() << "opened a missing device";
    } catch (const SerialPortError& e) {
        EXPECT_STREQ(e.what(), "SerialPort::open() - Error opening port");
        EXPECT_FALSE(e.timeout());
    }
    // Not a terminal: the line cannot be set up, and nothing stays open.
    SerialPort not_a_tty("/dev/null", BAUD_9600);
    EXPECT_EQ(not_a_tty.openNoThrow(), static_cast<unsigned long>(ENOTTY));
    EXPECT_FALSE(not_a_tty.isOpen());
    EXPECT_USAGE_ERROR(not_a_tty.openNoThrow(true, -1), kModule, "timeout_ms is negative");
}

TEST(SerialPortErrors, ClosedPort) {
    SerialPort port("/nonexistent/tty", BAUD_9600);
    unsigned char byte = 0;
    Bytes out{1, 2};
    int size = 7;
    const unsigned long bad = EBADF;
    EXPECT_EQ(port.writeNoThrow(Bytes{1}), bad);
    EXPECT_EQ(port.readNoThrow(byte), bad);
    EXPECT_EQ(port.readNoThrow(out, 1, true), bad);
    EXPECT_EQ(port.sendDatagramNoThrow(Bytes{1}), bad);
    EXPECT_EQ(port.receiveDatagramNoThrow(out, true, size), bad);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(out, (Bytes{1, 2}));
    EXPECT_THROW(port.read(), SerialPortError);
    EXPECT_USAGE_ERROR(port.reset(), kModule, "reset() called on non-open serial port");
    EXPECT_USAGE_ERROR(port.flush(), kModule, "flush() called on non-open serial port");
    EXPECT_USAGE_ERROR(port.setReadTimeoutMillis(-1), kModule, "timeout_ms is negative");
    EXPECT_USAGE_ERROR(port.setWriteTimeoutMillis(-1), kModule, "timeout_ms is negative");
    EXPECT_USAGE_ERROR(port.readNoThrow(out, -1, false), kModule, "count is negative");
    EXPECT_EQ(port.readTimeoutMillis(), SerialPort::DEFAULT_READ_TIMEOUT_MS);
    EXPECT_EQ(port.writeTimeoutMillis(), SerialPort::DEFAULT_WRITE_TIMEOUT_MS);
}

TEST_F(PseudoTerminal, LineIsRawEightBitWithoutFlowControl) {
    SerialPort port(_path, BAUD_38400);
    ASSERT_EQ(port.openNoThrow(), 0u);
    const termios line = lineSettings();
    EXPECT_EQ(line.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_NE(line.c_cflag & CLOCAL, 0u);
    EXPECT_NE(line.c_cflag & CREAD, 0u);
    EXPECT_EQ(line.c_cflag & (CRTSCTS | PARENB | CSTOPB), 0u);
    EXPECT_EQ(line.c_iflag & (IXON | IXOFF | IXANY | ICRNL | ISTRIP | INPCK), 0u);
    EXPECT_EQ(line.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0u);
    EXPECT_EQ(line.c_oflag & OPOST, 0u);
    EXPECT_EQ(::cfgetospeed(&line), static_cast<speed_t>(B38400));
    EXPECT_EQ(::cfgetispeed(&line), static_cast<speed_t>(B38400));
}

TEST_F(PseudoTerminal, ParityAndStopBits) {
    const struct {
        unsigned char parity;
        tcflag_t flags;
    } parities[] = {{NOPARITY, 0},
                    {ODDPARITY, PARENB | PARODD},
                    {EVENPARITY, PARENB},
                    {MARKPARITY, PARENB | CMSPAR | PARODD},
                    {SPACEPARITY, PARENB | CMSPAR}};
    for (const auto& p : parities) {
        SCOPED_TRACE(static_cast<int>(p.parity));
        SerialPort port(_path, BAUD_9600, true, p.parity);
        ASSERT_EQ(port.openNoThrow(), 0u);
        const termios line = lineSettings();
        // A pseudo-terminal keeps every flag but PARENB, which its driver always clears.
        EXPECT_EQ(line.c_cflag & (PARODD | CMSPAR), p.flags & ~PARENB);
        EXPECT_EQ((line.c_iflag & INPCK) != 0, p.parity != NOPARITY);
    }
    const struct {
        unsigned char stop_bits;
        bool two;
    } stops[] = {{ONESTOPBIT, false}, {ONE5STOPBITS, true}, {TWOSTOPBITS, true}};
    for (const auto& s : stops) {
        SCOPED_TRACE(static_cast<int>(s.stop_bits));
        SerialPort port(_path, BAUD_9600, true, NOPARITY, s.stop_bits);
        ASSERT_EQ(port.openNoThrow(), 0u);
        EXPECT_EQ((lineSettings().c_cflag & CSTOPB) != 0, s.two);
    }
}

TEST_F(PseudoTerminal, RatesWithoutTermiosConstantOpen) {
    for (BaudRate rate : {BAUD_14400, BAUD_128000}) {
        SCOPED_TRACE(static_cast<int>(rate));
        SerialPort port(_path, rate);
        ASSERT_EQ(port.openNoThrow(), 0u);
        // The kernel reports an arbitrary rate with the BOTHER code in place of a B-constant.
        EXPECT_EQ(lineSettings().c_cflag & CBAUD, static_cast<tcflag_t>(CBAUDEX));
        port.write(Bytes{0x42});
        EXPECT_EQ(receive(1), Bytes{0x42});
    }
}

TEST_F(PseudoTerminal, ExclusivePortIsClaimedWhileOpen) {
    SerialPort first(_path, BAUD_9600, true);
    SerialPort second(_path, BAUD_9600, true);
    EXPECT_TRUE(SerialPort::isOpen(_path));
    ASSERT_EQ(first.openNoThrow(), 0u);
    EXPECT_FALSE(SerialPort::isOpen(_path));
    EXPECT_EQ(second.openNoThrow(), static_cast<unsigned long>(EBUSY));
    EXPECT_FALSE(second.isOpen());
    first.close();
    EXPECT_TRUE(SerialPort::isOpen(_path));
    EXPECT_EQ(second.openNoThrow(), 0u);

    // A shared port claims nothing.
    SerialPort shared(_path, BAUD_9600, false);
    second.close();
    ASSERT_EQ(shared.openNoThrow(), 0u);
    EXPECT_TRUE(SerialPort::isOpen(_path));
    EXPECT_FALSE(SerialPort::isOpen("/nonexistent/tty"));
}

TEST_F(PseudoTerminal, OpenPurgesStaleInputOnlyWhenAsked) {
    termios raw = lineSettings();
    ::cfmakeraw(&raw);
    ASSERT_EQ(::tcsetattr(_slave, TCSANOW, &raw), 0);
    SerialPort port(_path, BAUD_9600);
    for (bool purge : {true, false}) {
        SCOPED_TRACE(purge);
        send(Bytes{1, 2, 3});
        awaitQueued(3);
        ASSERT_EQ(port.openNoThrow(purge, 20), 0u);
        Bytes out;
        EXPECT_EQ(port.readNoThrow(out, 3, false), purge ? ETIMEDOUT : 0ul);
        EXPECT_EQ(out, purge ? Bytes{} : (Bytes{1, 2, 3}));
    }
}

TEST_F(OpenPort, RawWritesAndReads) {
    _port->write(Bytes{0x00, 0xAA, 0x0D, 0x0A, 0xFF});
    EXPECT_EQ(receive(5), (Bytes{0x00, 0xAA, 0x0D, 0x0A, 0xFF}));

    send(Bytes{0x0D, 0x80, 0x11, 0x13, 0x03, 0x04, 0x05});
    EXPECT_EQ(_port->read(), '\r');
    unsigned char byte = 0;
    EXPECT_EQ(_port->readNoThrow(byte), 0u);
    EXPECT_EQ(byte, 0x80);
    Bytes out{9};
    _port->read(out, 2, true);  // XON and XOFF are data on this line
    EXPECT_EQ(out, (Bytes{9, 0x11, 0x13}));
    _port->read(out, 3, false);
    EXPECT_EQ(out, (Bytes{3, 4, 5}));
    _port->read(out, 0, false);
    EXPECT_TRUE(out.empty());
    _port->flush();
}

TEST_F(OpenPort, FramesOnTheWire) {
    const struct {
        const char* name;
        Bytes payload;
        Bytes wire;
    } cases[] = {
        // The CRC of an empty payload is 0x0000.
        {"empty", {}, {0xAA, 0x55, 0x00, 0x00, 0xAA, 0x55}},
        {"marker inside",
         {0x01, 0xAA, 0x55, 0x02},
         {0xAA, 0x55, 0x01, 0xAA, 0x00, 0x55, 0x02, 0xDD, 0xE1, 0xAA, 0x55}},
        {"check text",
         {'1', '2', '3', '4', '5', '6', '7', '8', '9'},
         {0xAA, 0x55, '1', '2', '3', '4', '5', '6', '7', '8', '9', 0x31, 0xC3, 0xAA, 0x55}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(frameOf(c.payload), c.wire);
        _port->sendDatagram(c.payload);
        EXPECT_EQ(receive(c.wire.size()), c.wire);
        send(c.wire);
        EXPECT_EQ(receiveDatagram(), c.payload);
    }
}

TEST_F(OpenPort, CrcBytesEqualToMarkerAreStuffed) {
    // Search two-byte payloads for a CRC with 0xAA as its high byte, its low byte, or both;
    // the payload bytes themselves stay clear of 0xAA so only the CRC is stuffed.
    struct Case {
        const char* name;
        bool high, low;
        Bytes payload;
    } cases[] = {{"high", true, false, {}}, {"low", false, true, {}}, {"both", true, true, {}}};
    for (unsigned int v = 0; v <= 0xFFFF; ++v) {
        const Bytes payload{static_cast<unsigned char>(v >> 8), static_cast<unsigned char>(v)};
        if (payload[0] == 0xAA || payload[1] == 0xAA) {
            continue;
        }
        const unsigned short crc = SerialPort::makeCRC(payload);
        for (Case& c : cases) {
            if (c.payload.empty() && ((crc >> 8) == 0xAA) == c.high &&
                ((crc & 0xFF) == 0xAA) == c.low) {
                c.payload = payload;
            }
        }
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_FALSE(c.payload.empty());
        const unsigned short crc = SerialPort::makeCRC(c.payload);
        Bytes crc_wire;
        for (unsigned char b :
             {static_cast<unsigned char>(crc >> 8), static_cast<unsigned char>(crc & 0xFF)}) {
            crc_wire.push_back(b);
            if (b == 0xAA) {
                crc_wire.push_back(0x00);
            }
        }
        const Bytes wire = concat({{0xAA, 0x55}, c.payload, crc_wire, {0xAA, 0x55}});
        ASSERT_EQ(wire.size(), 8u + (c.high ? 1 : 0) + (c.low ? 1 : 0));
        _port->sendDatagram(c.payload);
        EXPECT_EQ(receive(wire.size()), wire);
        send(wire);
        EXPECT_EQ(receiveDatagram(), c.payload);
    }
}

TEST_F(OpenPort, FramesComeBackUnchanged) {
    Bytes every_byte;
    for (int b = 0; b < 256; ++b) {
        every_byte.push_back(static_cast<unsigned char>(b));
    }
    const Bytes payloads[] = {{},           {0xAA},       {0xAA, 0x55}, {0xAA, 0xAA, 0x55, 0x55},
                              {0x55, 0xAA}, {0xAA, 0x00}, every_byte,   Bytes(3000, 0xAA)};
    for (const Bytes& payload : payloads) {
        SCOPED_TRACE(payload.size());
        send(frameOf(payload));
        Bytes out{7};
        int size = -1;
        EXPECT_EQ(_port->receiveDatagramNoThrow(out, false, size), 0u);
        EXPECT_EQ(out, payload);
        EXPECT_EQ(size, static_cast<int>(payload.size()));
    }
}

TEST_F(OpenPort, BackToBackFramesAndNoise) {
    const Bytes a{1, 2, 3}, b{0xAA, 0x55}, c{}, d{4};
    // Noise may hold a lone 0xAA, as long as no marker forms.
    const Bytes noise{0x00, 0x55, 0xAA, 0x01, 0x55, 0xFF, 0xAA, 0x00};
    send(concat({frameOf(a), frameOf(b), noise, frameOf(c), noise, noise, frameOf(d)}));
    EXPECT_EQ(receiveDatagram(), a);
    EXPECT_EQ(receiveDatagram(), b);
    EXPECT_EQ(receiveDatagram(), c);
    EXPECT_EQ(receiveDatagram(), d);
}

TEST_F(OpenPort, SearchStartingBetweenTwoFramesReadsAgain) {
    // The tail of a frame whose start was missed, its end marker, then the next frame: the
    // end marker is taken for a start marker and the empty frame before the real start is
    // skipped.
    const Bytes a{9, 8, 7};
    send(concat({Bytes{0x10, 0x20, 0xAA, 0x55}, frameOf(a)}));
    Bytes out{5};
    int size = -1;
    EXPECT_EQ(_port->receiveDatagramNoThrow(out, true, size), 0u);
    EXPECT_EQ(out, (Bytes{5, 9, 8, 7}));
    EXPECT_EQ(size, 3);
}

TEST_F(OpenPort, MarkerAfterAnotherMarkerByteIsNotRecognised) {
    // In 0xAA 0xAA 0x55 the second 0xAA is consumed unexamined, so the search goes on to the
    // next marker: the 0x01 is never read as a one-byte frame.
    const Bytes a{6, 6};
    send(concat({Bytes{0xAA, 0xAA, 0x55, 0x01, 0xAA, 0x55}, frameOf(a)}));
    EXPECT_EQ(receiveDatagram(), a);
}

TEST_F(OpenPort, CorruptedFrameCostsOnlyThatFrame) {
    const Bytes a{1, 2, 3, 4}, b{5, 6};
    Bytes bad = frameOf(a);
    bad[3] ^= 0x40;
    send(concat({bad, frameOf(b), frameOf(a), Bytes{0xAA, 0x55, 0x01, 0xAA, 0x55}, frameOf(b)}));

    Bytes out{7, 7};
    int size = -1;
    EXPECT_EQ(_port->receiveDatagramNoThrow(out, true, size), SerialPort::ERROR_CRC);
    EXPECT_EQ(out, (Bytes{7, 7}));
    EXPECT_EQ(size, 0);
    EXPECT_EQ(receiveDatagram(), b);

    send(bad);
    EXPECT_EQ(receiveDatagram(), a);
    try {
        // A single byte between markers is too short for a CRC: a CRC error as well.
        _port->receiveDatagram(out, false);
        ADD_FAILURE() << "no CRC error";
    } catch (const SerialPortError& e) {
        EXPECT_STREQ(e.what(),
                     "SerialPort::receiveDatagram() - Error receiving datagram: Data error "
                     "(cyclic redundancy check).");
        EXPECT_FALSE(e.timeout());
    }
    EXPECT_EQ(receiveDatagram(), b);
    EXPECT_EQ(_port->receiveDatagramNoThrow(out, false, size), SerialPort::ERROR_CRC);
    EXPECT_TRUE(out.empty());
}

TEST_F(OpenPort, SilentLineTimesOut) {
    _port->setReadTimeoutMillis(20);
    Bytes out{1};
    int size = -1;
    const unsigned long code = _port->receiveDatagramNoThrow(out, true, size);
    EXPECT_TRUE(SerialPort::isTimeout(code)) << code;
    EXPECT_EQ(out, Bytes{1});
    unsigned char byte = 0;
    EXPECT_TRUE(SerialPort::isTimeout(_port->readNoThrow(byte)));

    // A frame that stops half way times out as well.
    send(Bytes{0xAA, 0x55, 0x01});
    try {
        _port->receiveDatagram(out, false);
        ADD_FAILURE() << "no time-out";
    } catch (const SerialPortError& e) {
        EXPECT_STREQ(e.what(),
                     "SerialPort::receiveDatagram() - Error receiving datagram: Timed out.");
        EXPECT_TRUE(e.timeout());
    }
    _port->setReadTimeoutMillis(0);
    send(Bytes{0x42});
    awaitQueued(1);
    EXPECT_EQ(_port->read(), 0x42);
}

TEST_F(OpenPort, WriteTimesOutWhenTheLineStopsTakingBytes) {
    // Nobody reads the master side, so the terminal's buffers fill up.
    _port->setWriteTimeoutMillis(0);
    const Bytes chunk(1024, 0x5A);
    unsigned long code = 0;
    for (int i = 0; i < 10000 && code == 0; ++i) {
        code = _port->writeNoThrow(chunk);
    }
    EXPECT_TRUE(SerialPort::isTimeout(code)) << code;
    // The terminal may still drain a little into its other side, so a later write can pass.
    try {
        for (int i = 0; i < 100; ++i) {
            _port->write(chunk);
        }
        ADD_FAILURE() << "no time-out";
    } catch (const SerialPortError& e) {
        EXPECT_STREQ(e.what(), "SerialPort::write() - Error writing to port: Timed out.");
        EXPECT_TRUE(e.timeout());
    }
}

TEST_F(OpenPort, ResetDiscardsPendingInput) {
    send(Bytes{1, 2, 3});
    awaitQueued(3);
    _port->reset();
    _port->setReadTimeoutMillis(20);
    unsigned char byte = 0;
    EXPECT_EQ(_port->readNoThrow(byte), static_cast<unsigned long>(ETIMEDOUT));
}

TEST_F(PseudoTerminal, HangUpIsAnErrorNotATimeout) {
    SerialPort port(_path, BAUD_9600);
    ASSERT_EQ(port.openNoThrow(), 0u);
    ::close(_master);
    _master = -1;
    unsigned char byte = 0;
    const unsigned long code = port.readNoThrow(byte);
    EXPECT_NE(code, 0u);
    EXPECT_FALSE(SerialPort::isTimeout(code)) << code;
}
