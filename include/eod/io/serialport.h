#ifndef EOD_IO_SERIALPORT_H
#define EOD_IO_SERIALPORT_H

// Byte frames (datagrams) over an RS-232 line, and raw reads and writes.
//
// Frame on the wire: 0xAA 0x55, the payload, the CRC-16 of the payload (high byte first),
// 0xAA 0x55. Every 0xAA of the payload or of the CRC is sent as 0xAA 0x00, so a marker never
// appears inside a frame. The CRC is CRC-16/XMODEM: polynomial 0x1021, initial value 0, no
// reflection, no final XOR.
//
// The line is raw 8-bit: 8 data bits, no flow control (neither RTS/CTS nor XON/XOFF), modem
// control lines ignored, no byte translated. Every operation comes as a throwing form
// (SerialPortError) and a NoThrow form that returns 0 or the errno-style code of the failure;
// reads and writes on a closed port give EBADF.

#include <string>
#include <vector>

#include <eod/io/serialporterror.h>

namespace tq {
namespace eod {
namespace io {

// COM1..COM10 are the platform's first ten serial devices, /dev/ttyS0../dev/ttyS9.
enum ComPortID : int { COM1, COM2, COM3, COM4, COM5, COM6, COM7, COM8, COM9, COM10 };
constexpr int NUM_PORTS = 10;

// Values are bits per second. BAUD_14400 holds 14000 on purpose: baudRateFlag maps it to
// the 14400 line rate, and the number 14400 is not a valid value.
enum BaudRate : int {
    BAUD_110 = 110,
    BAUD_300 = 300,
    BAUD_600 = 600,
    BAUD_1200 = 1200,
    BAUD_2400 = 2400,
    BAUD_4800 = 4800,
    BAUD_9600 = 9600,
    BAUD_14400 = 14000,
    BAUD_19200 = 19200,
    BAUD_38400 = 38400,
    BAUD_57600 = 57600,
    BAUD_115200 = 115200,
    BAUD_128000 = 128000
};

// Parity: mark and space are stick parity (CMSPAR).
constexpr unsigned char NOPARITY = 0;
constexpr unsigned char ODDPARITY = 1;
constexpr unsigned char EVENPARITY = 2;
constexpr unsigned char MARKPARITY = 3;
constexpr unsigned char SPACEPARITY = 4;

// Stop bits. The line offers only one or two stop bits, so ONE5STOPBITS sends two.
constexpr unsigned char ONESTOPBIT = 0;
constexpr unsigned char ONE5STOPBITS = 1;
constexpr unsigned char TWOSTOPBITS = 2;

class SerialPort {
public:
    // The longest wait for the next byte of a read before it gives up with ETIMEDOUT.
    static constexpr int DEFAULT_READ_TIMEOUT_MS = 1000;
    // A write may take this long plus the time the line needs to send its bytes (11 bit
    // times per byte) before it gives up with ETIMEDOUT.
    static constexpr int DEFAULT_WRITE_TIMEOUT_MS = 1000;
    // Returned by receiveDatagramNoThrow for a frame whose CRC does not match. The number is
    // the platform's ENFILE as well, which no read can produce.
    static constexpr unsigned long ERROR_CRC = 23;

    // Check the arguments; nothing is opened. With `exclusive` the port is claimed while it
    // is open (TIOCEXCL and an flock() lock), so no second program or SerialPort talks on
    // the same line and corrupts the frames. Usage errors: "post_id outside the range
    // 0..NUM_PORTS-1", "unknown baud rate", "parity outside the range NOPARITY..SPACEPARITY",
    // "stop_bits outside thet range ONESTOPBIT..TWOSTOPBITS".
    SerialPort(ComPortID port_id, BaudRate baud_rate, bool exclusive = true,
               unsigned char parity = NOPARITY, unsigned char stop_bits = ONESTOPBIT);
    // Any terminal device, such as a USB adapter or the slave side of a pseudo-terminal.
    SerialPort(const std::string& device_path, BaudRate baud_rate, bool exclusive = true,
               unsigned char parity = NOPARITY, unsigned char stop_bits = ONESTOPBIT);
    ~SerialPort();
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    // "COM1".."COM10", and the device behind it.
    static std::string portName(ComPortID port_id);
    static std::string devicePath(ComPortID port_id);
    // The line rate in bits per second for a BaudRate: the value itself, except 14400 for
    // BAUD_14400. Rates without a classic termios constant (14400, 128000) are set through
    // the kernel's arbitrary-rate interface; a device that cannot run them fails to open.
    static unsigned int baudRateFlag(BaudRate baud_rate);
    static unsigned short makeCRC(const std::vector<unsigned char>& data);
    // True when the CRC over data, whose last two bytes are its CRC, is 0. Usage error "data
    // should contain at least two checksum bytes".
    static bool checkCRC(const std::vector<unsigned char>& data);
    // ETIMEDOUT, the code every read and write returns when its time-out expires.
    static bool isTimeout(unsigned long error_code);
    // Whether the port could be opened (and, for an exclusive port, claimed) right now.
    static bool isOpen(ComPortID port_id);
    static bool isOpen(const std::string& device_path);

    const std::string& device() const;

    // Open and set up the line. `purge` discards bytes received before the open and any not
    // yet sent, so stale bytes never reach the frame search; `read_timeout_ms` becomes the
    // read time-out. An open port is closed first. open throws SerialPortError
    // "SerialPort::open() - Error opening port"; lastSystemError() then gives the code that
    // openNoThrow returns. Usage error: "timeout_ms is negative".
    void open(bool purge = true, int read_timeout_ms = DEFAULT_READ_TIMEOUT_MS);
    unsigned long openNoThrow(bool purge = true, int read_timeout_ms = DEFAULT_READ_TIMEOUT_MS);
    bool isOpen() const;
    void close();
    // Discard every byte received and not yet read, and every byte not yet sent.
    void reset();
    // Wait until every byte written has left the line.
    void flush();
    unsigned long lastSystemError() const;

    // 0 means no wait. Usage error: "timeout_ms is negative".
    void setReadTimeoutMillis(int timeout_ms);
    int readTimeoutMillis() const;
    void setWriteTimeoutMillis(int timeout_ms);
    int writeTimeoutMillis() const;

    // All bytes, or a failure.
    void write(const std::vector<unsigned char>& bytes) const;
    unsigned long writeNoThrow(const std::vector<unsigned char>& bytes) const;
    char read() const;
    unsigned long readNoThrow(unsigned char& byte) const;
    // Exactly `count` bytes, each within the read time-out of the one before; on failure
    // `out` is left as it was and the bytes read so far are lost. Usage error "count is
    // negative".
    void read(std::vector<unsigned char>& out, int count, bool append) const;
    unsigned long readNoThrow(std::vector<unsigned char>& out, int count, bool append) const;

    void sendDatagram(const std::vector<unsigned char>& payload) const;
    unsigned long sendDatagramNoThrow(const std::vector<unsigned char>& payload) const;
    // The payload of the next frame with a good CRC, appended to or replacing `out`; returns
    // its size. `out` is emptied first unless `append`, also when the call fails. A frame
    // with a bad CRC gives ERROR_CRC and adds nothing; the next call searches for the next
    // frame. A silent line gives ETIMEDOUT after the read time-out.
    int receiveDatagram(std::vector<unsigned char>& out, bool append) const;
    unsigned long receiveDatagramNoThrow(std::vector<unsigned char>& out, bool append,
                                         int& size) const;

private:
    unsigned long saveSystemErrorAndClose();
    unsigned long skipUntilFrameMarker() const;
    unsigned long readUntilFrameMarker(std::vector<unsigned char>& out) const;

    std::string _device;
    unsigned int _bits_per_second;
    bool _exclusive;
    unsigned char _parity;
    unsigned char _stop_bits;
    int _fd = -1;
    int _read_timeout_ms = DEFAULT_READ_TIMEOUT_MS;
    int _write_timeout_ms = DEFAULT_WRITE_TIMEOUT_MS;
    unsigned long _last_error = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
