#include <eod/io/tcpsocket.h>

#include <algorithm>
#include <cassert>

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <eod/io/socketerror.h>

#include "eod/io/detail/netplatform.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

struct SocketOption {
    int level;
    int name;
};

// Indexed by TcpSocket::SocketOptionFlag.
const SocketOption kSocketOptions[] = {
    {SOL_SOCKET, SO_REUSEADDR},
    {IPPROTO_TCP, TCP_NODELAY},
};

const SocketOption* findSocketOption(TcpSocket::SocketOptionFlag flag) {
    const auto index = static_cast<unsigned int>(flag);
    if (index >= sizeof kSocketOptions / sizeof kSocketOptions[0]) {
        throw SocketError("Socket option not supported");
    }
    return &kSocketOptions[index];
}

[[noreturn]] void throwSocketError(const char* message) {
    throw SocketError(netLibErrorString(message));
}

bool waitOn(unsigned int handle, bool for_writing, int timeout_ms) {
    const int ready = detail::waitForSocket(handle, for_writing, timeout_ms);
    if (ready < 0) throwSocketError("Socket Error while waiting for data");
    return ready > 0;
}

}  // namespace

void TcpSocket::Buffer::setSize(int n) {
    EOD_REQUIRE(n >= 0, "n >= 0");
    std::vector<char>(static_cast<std::size_t>(n)).swap(_bytes);
}

TcpSocket::TcpSocket(unsigned int handle) : _handle(handle) {
    if (opened()) initialiseBufferSizes();
}

TcpSocket::TcpSocket(unsigned int handle, const InetAddress& local, const InetAddress& remote)
    : TcpSocket(handle) {
    _local_address = local;
    _remote_address = remote;
    _connected = opened();
}

TcpSocket::~TcpSocket() { close(); }

void TcpSocket::open() {
    EOD_REQUIRE(!opened(), "socket already open");
    if (!detail::openSocket(SOCK_STREAM, IPPROTO_TCP, _handle)) {
        throwSocketError("Failed to build socket.");
    }
    initialiseBufferSizes();
}

void TcpSocket::close() {
    if (opened()) detail::closeSocket(_handle);
    _handle = INVALID_SOCKET;
    _connected = false;
    _peer_closed = false;
}

void TcpSocket::bind(const InetAddress& address) {
    EOD_REQUIRE(opened(), "socket not open");
    EOD_REQUIRE(!connected(), "socket connected");
    if (::bind(fd(), address.getSockAddr(), sizeof(sockaddr_in)) != 0) {
        throwSocketError("Could not bind TCP socket to address.");
    }
    InetAddress bound;
    socklen_t length = sizeof(sockaddr_in);
    if (::getsockname(fd(), bound.getSockAddr(), &length) != 0) {
        throwSocketError("Could not determine bound port for TCP socket.");
    }
    _local_address = bound;
}

void TcpSocket::connect(const InetAddress& address) {
    EOD_REQUIRE(opened(), "un-open socket.");
    if (connected()) {
        // A second connect is a mistake of the caller; the socket does not stay half-usable.
        close();
        EOD_USAGE_ERROR("already connected socket.");
    }
    if (!detail::connectSocket(_handle, address.getSockAddr())) {
        const std::string message = netLibErrorString("Could not connect TCP socket to address.");
        close();
        throw SocketError(message);
    }
    _remote_address = address;
    _connected = true;
    // The system chose our end's address and port; knowing them helps to report the
    // connection. Failing to ask is not a failure of the connection, so it is not raised.
    InetAddress local;
    socklen_t length = sizeof(sockaddr_in);
    if (::getsockname(fd(), local.getSockAddr(), &length) == 0) _local_address = local;
}

void TcpSocket::listen() {
    EOD_REQUIRE(opened(), "un-open socket");
    if (::listen(fd(), SOMAXCONN) != 0) throwSocketError("Socket Error try to set listening state");
}

TcpSocket* TcpSocket::accept(int timeout_ms) {
    EOD_REQUIRE(opened(), "un-open socket");
    if (!waitForData(timeout_ms)) return nullptr;
    InetAddress peer;
    unsigned int handle = INVALID_SOCKET;
    if (!detail::acceptSocket(_handle, *reinterpret_cast<sockaddr_in*>(peer.getSockAddr()),
                              handle)) {
        throwSocketError("Socket Error trying to accept connection");
    }
    return new TcpSocket(handle, _local_address, peer);
}

void TcpSocket::send(const std::vector<unsigned char>& bytes) {
    send(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

void TcpSocket::send(const unsigned char* bytes, unsigned int count) {
    EOD_REQUIRE(connected(), "unconnected socket");
    unsigned int sent = 0;
    while (sent < count) {
        const unsigned int bytes_to_send = count - sent;
        assert(bytes_to_send > 0);
        sent += sendBytes(bytes + sent, bytes_to_send, false);
    }
}

unsigned int TcpSocket::send(const unsigned char* bytes, unsigned int count, int timeout_ms) {
    EOD_REQUIRE(connected(), "unconnected socket");
    unsigned int sent = 0;
    while (sent < count && waitForSend(timeout_ms)) {
        const unsigned int bytes_to_send = std::min(_send_chunk_size, count - sent);
        assert(bytes_to_send > 0);
        // Writable means some room, not room for a whole chunk: take what fits and wait
        // again rather than block past the timeout.
        sent += sendBytes(bytes + sent, bytes_to_send, true);
    }
    return sent;
}

unsigned int TcpSocket::sendBytes(const unsigned char* bytes, unsigned int count, bool no_wait) {
    EOD_REQUIRE(connected(), "unconnected socket");
    const long sent = detail::sendOnSocket(_handle, bytes, count, no_wait);
    if (sent < 0) throwSocketError("Failed to send data.");
    return static_cast<unsigned int>(sent);
}

int TcpSocket::receive(std::vector<unsigned char>& out, int timeout_ms, bool append) {
    EOD_REQUIRE(connected(), "unconnected socket");
    if (!waitForData(timeout_ms)) return 0;
    if (!append) out.clear();
    const long bytes_received = detail::receiveOnSocket(
        _handle, _rx_buffer.buffer(), static_cast<std::size_t>(_rx_buffer.size()));
    if (bytes_received < 0) throwSocketError("Failed to receive data.");
    assert(bytes_received <= _rx_buffer.size());
    out.insert(out.end(), _rx_buffer.buffer(), _rx_buffer.buffer() + bytes_received);
    if (bytes_received == 0) _peer_closed = true;
    return static_cast<int>(bytes_received);
}

bool TcpSocket::dataReady() const { return waitForData(0); }

bool TcpSocket::waitForData(int timeout_ms) const { return waitOn(_handle, false, timeout_ms); }

bool TcpSocket::waitForSend(int timeout_ms) const { return waitOn(_handle, true, timeout_ms); }

void TcpSocket::setSocketFlag(SocketOptionFlag flag, bool on) {
    const SocketOption* option = findSocketOption(flag);
    const int value = on ? 1 : 0;
    if (::setsockopt(fd(), option->level, option->name, &value, sizeof value) != 0) {
        throwSocketError("Failed to set socket option.");
    }
}

bool TcpSocket::socketFlag(SocketOptionFlag flag) const {
    const SocketOption* option = findSocketOption(flag);
    int value = 0;
    socklen_t length = sizeof value;
    if (::getsockopt(fd(), option->level, option->name, &value, &length) != 0) {
        throwSocketError("Failed to set socket option.");
    }
    return value != 0;
}

void TcpSocket::enableNagleAlgortihm(bool enable) { setSocketFlag(FLAG_TCP_NO_DELAY, !enable); }

void TcpSocket::initialiseBufferSizes() {
    try {
        setBufferSize(SO_RCVBUF, _rx_buffer);
        if (_rx_buffer.size() == 0) throw SocketError("Invalid SO_RCVBUF size returned.");
        _send_chunk_size = socketBufferSize(SO_SNDBUF);
        if (_send_chunk_size == 0) throw SocketError("Invalid SO_SNDBUF size returned.");
    } catch (...) {
        // The socket owns the handle from the start: a socket that cannot be used is
        // closed here, not leaked.
        close();
        throw;
    }
}

void TcpSocket::setBufferSize(int option, Buffer& buffer) {
    buffer.setSize(static_cast<int>(socketBufferSize(option)));
}

unsigned int TcpSocket::socketBufferSize(int option) const {
    EOD_REQUIRE(option == SO_RCVBUF || option == SO_SNDBUF,
                "buffer_name neither SO_RCVBUF nor SO_SNDBUF");
    int size = 0;
    socklen_t length = sizeof size;
    if (::getsockopt(fd(), SOL_SOCKET, option, &size, &length) != 0) {
        throwSocketError("Failed to get socket buffer size.");
    }
    // A size of 0 (or less) is refused by the caller, which knows which buffer it sizes.
    return size > 0 ? static_cast<unsigned int>(size) : 0;
}

}  // namespace io
}  // namespace eod
}  // namespace tq
