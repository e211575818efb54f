#include <eod/io/datagramsocket.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include <eod/io/socketerror.h>

#include "eod/io/detail/netplatform.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

[[noreturn]] void throwSocketError(const char* message) {
    throw SocketError(netLibErrorString(message));
}

void setIntOption(int socket, int level, int option, int value, const char* failure) {
    if (::setsockopt(socket, level, option, &value, sizeof value) != 0) {
        throwSocketError(failure);
    }
}

}  // namespace

DatagramSocket::DatagramSocket(Unopened) {}

DatagramSocket::DatagramSocket(int local_port, int receive_buffer_size, int send_buffer_size)
    : DatagramSocket(Unopened{}) {
    open(local_port, receive_buffer_size, send_buffer_size, false);
}

DatagramSocket::DatagramSocket(const std::vector<std::string>& groups, int local_port,
                               int receive_buffer_size, int send_buffer_size)
    : DatagramSocket(Unopened{}) {
    open(local_port, receive_buffer_size, send_buffer_size, true);
    for (const std::string& group : groups) {
        subscribeMulticast(group);
    }
}

DatagramSocket::~DatagramSocket() {
    if (_socket >= 0) {
        detail::closeSocket(static_cast<unsigned int>(_socket));
    }
}

void DatagramSocket::open(int local_port, int receive_buffer_size, int send_buffer_size,
                          bool share_port) {
    unsigned int handle = 0;
    if (!detail::openSocket(SOCK_DGRAM, 0, handle)) {
        throwSocketError("Failed to build socket.");
    }
    _socket = static_cast<int>(handle);
    if (share_port) {
        setIntOption(_socket, SOL_SOCKET, SO_REUSEADDR, 1,
                     "Could not set socket to REUSEADDR mode");
    }
    // Sizes go in before bind, so that no datagram arrives into a buffer of another size.
    if (receive_buffer_size != 0) {
        setReceiveBufferSize(receive_buffer_size);
    } else {
        _receive_buffer_size = systemBufferSize(SO_RCVBUF);
        _receive_buffer.resize(std::min(_receive_buffer_size, MAX_DATAGRAM_SIZE));
    }
    if (send_buffer_size != 0) {
        setSendBufferSize(send_buffer_size);
    } else {
        _send_buffer_size = systemBufferSize(SO_SNDBUF);
    }

    // By default this system hands a socket the datagrams of every group that any socket
    // on the machine joined, if only the port matches; a socket should hear only the groups
    // it joined itself, so that leaving a group means something.
    setIntOption(_socket, IPPROTO_IP, IP_MULTICAST_ALL, 0,
                 "Could not restrict socket to its own multicast groups.");
    _local_address.initialise(local_port);
    bindLocalAddress();
}

void DatagramSocket::bindLocalAddress() {
    if (::bind(_socket, _local_address.getSockAddr(), sizeof(sockaddr_in)) != 0) {
        throwSocketError("Could not bind UDP command socket to address.");
    }
    _local_address.setPort(boundPort());
}

int DatagramSocket::boundPort() const {
    sockaddr_in bound{};
    socklen_t length = sizeof bound;
    if (::getsockname(_socket, reinterpret_cast<sockaddr*>(&bound), &length) != 0) {
        throwSocketError("Could not determine bound port for UDP socket.");
    }
    return ntohs(bound.sin_port);
}

int DatagramSocket::systemBufferSize(int option) const {
    int size = 0;
    socklen_t length = sizeof size;
    if (::getsockopt(_socket, SOL_SOCKET, option, &size, &length) != 0) {
        throwSocketError("Failed to get socket buffer size.");
    }
    return size;
}

int DatagramSocket::getSocket() const { return _socket; }

const InetAddress& DatagramSocket::getLocalAddress() const { return _local_address; }

void DatagramSocket::connectSocket(const InetAddress& peer) {
    if (::connect(_socket, peer.getSockAddr(), sizeof(sockaddr_in)) != 0) {
        throwSocketError("Could not connect socket to address.");
    }
    _peer_address = peer;
    _connected = true;
}

void DatagramSocket::disconnectSocket() {
    // Connecting to an AF_UNSPEC address dissolves the association, so that the system
    // stops filtering incoming datagrams by the old peer.
    sockaddr unspecified{};
    unspecified.sa_family = AF_UNSPEC;
    if (::connect(_socket, &unspecified, sizeof unspecified) != 0) {
        throwSocketError("Could not disconnect socket.");
    }
    _connected = false;
    // A port that the system chose at bind is given up with the association; bind the same
    // port again, now by number, which the system keeps from then on.
    if (boundPort() == 0) {
        bindLocalAddress();
    }
}

bool DatagramSocket::connected() const { return _connected; }

const InetAddress& DatagramSocket::getInetAddress() const {
    EOD_REQUIRE(_connected, "Socket is not connected.");
    return _peer_address;
}

void DatagramSocket::setReceiveBufferSize(int size) {
    EOD_REQUIRE(size > 0, "buffer size must be positive");
    setIntOption(_socket, SOL_SOCKET, SO_RCVBUF, size, "Failed to set socket recv buffer size.");
    _receive_buffer_size = size;
    // No datagram is longer than MAX_DATAGRAM_SIZE, so a larger buffer would never fill.
    _receive_buffer.resize(std::min(size, MAX_DATAGRAM_SIZE));
}

int DatagramSocket::getReceiveBufferSize() const { return _receive_buffer_size; }

void DatagramSocket::setSendBufferSize(int size) {
    EOD_REQUIRE(size > 0, "buffer size must be positive");
    setIntOption(_socket, SOL_SOCKET, SO_SNDBUF, size, "Failed to set socket send buffer size.");
    _send_buffer_size = size;
}

int DatagramSocket::getSendBufferSize() const { return _send_buffer_size; }

void DatagramSocket::sendDatagram(const std::vector<unsigned char>& datagram) const {
    EOD_REQUIRE(_connected, "Must connect socket before sending.");
    EOD_REQUIRE(datagram.size() <= MAX_DATAGRAM_SIZE,
                "Buffers exceeds maximum size for a datagram.");
    if (detail::sendOnSocket(static_cast<unsigned int>(_socket), datagram.data(), datagram.size(),
                             false) < 0) {
        throwSocketError("Failed to send datagram.");
    }
}

void DatagramSocket::sendDatagram(const std::vector<unsigned char>& datagram,
                                  const InetAddress& to) const {
    EOD_REQUIRE(datagram.size() <= MAX_DATAGRAM_SIZE,
                "Buffers exceeds maximum size for a datagram.");
    ssize_t sent;
    do {
        sent = ::sendto(_socket, datagram.data(), datagram.size(), MSG_NOSIGNAL, to.getSockAddr(),
                        sizeof(sockaddr_in));
    } while (sent < 0 && errno == EINTR);
    if (sent < 0) {
        throwSocketError("Failed to send datagram.");
    }
}

int DatagramSocket::receiveDatagram(std::vector<unsigned char>& out, const InetAddress& /*from*/,
                                    int timeout_ms, bool append) const {
    sockaddr_in sender{};
    const auto receiveWaiting = [&] {
        socklen_t length = sizeof sender;
        ssize_t count;
        do {
            // MSG_TRUNC makes the call return the datagram's full length even when only the
            // start of it fits, which is how a datagram too long for the buffer shows here.
            count =
                ::recvfrom(_socket, _receive_buffer.data(), _receive_buffer.size(),
                           MSG_TRUNC | MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&sender), &length);
        } while (count < 0 && errno == EINTR);
        return count;
    };
    // Take a waiting datagram at once and wait only when none is there: one system call
    // fewer per datagram under load. A datagram announced but then discarded for a bad
    // checksum also ends as "nothing there", never as a blocked call.
    ssize_t count = receiveWaiting();
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        errno = 0;
        if (!waitForData(timeout_ms)) {
            return 0;
        }
        count = receiveWaiting();
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            errno = 0;
            return 0;
        }
    }
    if (count < 0) {
        throwSocketError("Failed to receive datagram.");
    }
    _last_sender = InetAddress(sender);
    if (static_cast<std::size_t>(count) > _receive_buffer.size()) {
        return 0;
    }
    if (!append) {
        out.clear();
    }
    out.insert(out.end(), _receive_buffer.begin(), _receive_buffer.begin() + count);
    return static_cast<int>(count);
}

bool DatagramSocket::waitForData(int timeout_ms) const {
    const int ready = detail::waitForSocket(static_cast<unsigned int>(_socket), false, timeout_ms);
    if (ready < 0) {
        throwSocketError("Socket Error while waiting for data");
    }
    return ready > 0;
}

bool DatagramSocket::dataReady() const { return waitForData(0); }

void DatagramSocket::enabledBroadcast(bool enable) {
    setIntOption(_socket, SOL_SOCKET, SO_BROADCAST, enable ? 1 : 0,
                 "Failed to set socket broadcast option.");
}

void DatagramSocket::subscribeMulticast(const std::string& group) {
    setMembership(IP_ADD_MEMBERSHIP, group, "Failed to request membership of multicast group");
}

void DatagramSocket::unsubscribeMulticast(const std::string& group) {
    setMembership(IP_DROP_MEMBERSHIP, group, "Failed to drop membership of multicast group");
}

void DatagramSocket::setMembership(int option, const std::string& group, const char* failure) {
    ip_mreq request{};
    EOD_REQUIRE(::inet_pton(AF_INET, group.c_str(), &request.imr_multiaddr) == 1,
                "multicast group is not a dotted IPv4 address");
    request.imr_interface.s_addr = htonl(INADDR_ANY);
    if (::setsockopt(_socket, IPPROTO_IP, option, &request, sizeof request) != 0) {
        throwSocketError(failure);
    }
}

}  // namespace io
}  // namespace eod
}  // namespace tq
