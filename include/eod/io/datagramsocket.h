#ifndef EOD_IO_DATAGRAMSOCKET_H
#define EOD_IO_DATAGRAMSOCKET_H

// One IPv4 UDP socket: bound on construction, optionally connected to one peer, able to send
// to any address, to broadcast and to take part in multicast groups. The socket owns its
// handle and closes it on destruction; it is used by one thread at a time.
//
// Operating-system failures throw SocketError with the call's message, ": " and the
// description of the last socket error (netLibErrorString). Wrong call orders and arguments
// out of range throw std::invalid_argument "<module>:<line>: <reason>".

#include <string>
#include <vector>

#include <eod/io/inetaddress.h>

namespace tq {
namespace eod {
namespace io {

class DatagramSocket {
public:
    // The largest datagram sendDatagram accepts. IPv4 itself carries at most 65507 bytes of
    // payload, so datagrams between that and this limit are refused by the system instead.
    static constexpr int MAX_DATAGRAM_SIZE = 65535;

    // Bound to `local_port` on every local address (0: a port the system chooses, which
    // getLocalAddress() then holds). A buffer size above 0 is applied with
    // setReceiveBufferSize or setSendBufferSize; 0 keeps the system's default and takes its
    // size. The socket hears only the multicast groups it joined itself. Failures "Failed to
    // build socket.", "Could not restrict socket to its own multicast groups.", "Could not
    // bind UDP command socket to address.", "Could not determine bound port for UDP socket.",
    // "Failed to get socket buffer size." and those of the two setters, whose usage error a
    // negative size gets.
    explicit DatagramSocket(int local_port = 0, int receive_buffer_size = 0,
                            int send_buffer_size = 0);
    // The same with SO_REUSEADDR set first, so that several sockets and processes share the
    // port, and a member of every multicast group in `groups` (see subscribeMulticast).
    // Failure "Could not set socket to REUSEADDR mode".
    DatagramSocket(const std::vector<std::string>& groups, int local_port,
                   int receive_buffer_size = 0, int send_buffer_size = 0);
    ~DatagramSocket();
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    int getSocket() const;
    const InetAddress& getLocalAddress() const;

    // From now on sendDatagram(datagram) goes to `peer`, and only datagrams from `peer` are
    // received. Failure "Could not connect socket to address.".
    void connectSocket(const InetAddress& peer);
    // Forgets the peer: datagrams from any sender are received again, on the same local
    // port. Failures "Could not disconnect socket." and, should another socket have taken
    // the port meanwhile, "Could not bind UDP command socket to address.".
    void disconnectSocket();
    bool connected() const;
    // The peer; usage error "Socket is not connected.".
    const InetAddress& getInetAddress() const;

    // SO_RCVBUF. The size also bounds the datagrams received: a longer one is dropped.
    // Failure "Failed to set socket recv buffer size."; usage error "buffer size must be
    // positive". The system may reserve more than asked; the getter gives the size asked.
    void setReceiveBufferSize(int size);
    int getReceiveBufferSize() const;
    // SO_SNDBUF. Failure "Failed to set socket send buffer size."; usage error "buffer size
    // must be positive".
    void setSendBufferSize(int size);
    int getSendBufferSize() const;

    // To the connected peer. Usage errors "Must connect socket before sending.", "Buffers
    // exceeds maximum size for a datagram."; failure "Failed to send datagram.".
    void sendDatagram(const std::vector<unsigned char>& datagram) const;
    // To `to`, connected or not; the same size limit and failure.
    void sendDatagram(const std::vector<unsigned char>& datagram, const InetAddress& to) const;

    // Waits up to timeout_ms (0 polls, a negative value waits without limit) for the next
    // datagram and returns its size. `from` is taken as a const reference and left as it
    // is; the sender of the datagram just taken is given by lastSender(). Returns 0, with
    // `out` untouched, when the wait ends first or when the datagram was longer than the
    // receive buffer size (it is dropped; lastSender() still names its sender). Otherwise
    // `out` is emptied unless `append` and the datagram is appended, so an empty datagram
    // also returns 0. Failure "Failed to receive datagram.".
    int receiveDatagram(std::vector<unsigned char>& out, const InetAddress& from, int timeout_ms,
                        bool append) const;
    // The sender of the last datagram that receiveDatagram took off the socket (also one it
    // dropped as too long); the default address before the first.
    InetAddress lastSender() const { return _last_sender; }

    // Whether a datagram is waiting, after a wait of up to timeout_ms as above. Failure
    // "Socket Error while waiting for data".
    bool waitForData(int timeout_ms) const;
    bool dataReady() const;

    // SO_BROADCAST: whether datagrams may go to broadcast addresses. Failure "Failed to set
    // socket broadcast option.".
    void enabledBroadcast(bool enable);
    // Join or leave the multicast group given in dotted form, on the interface the system
    // routes the group to. Usage error "multicast group is not a dotted IPv4 address";
    // failures "Failed to request membership of multicast group" and "Failed to drop
    // membership of multicast group".
    void subscribeMulticast(const std::string& group);
    void unsubscribeMulticast(const std::string& group);

private:
    // Only as the target of the public constructors' delegation: once it has run, the
    // destructor closes the handle even when the rest of a public constructor throws.
    struct Unopened {};
    explicit DatagramSocket(Unopened);
    void open(int local_port, int receive_buffer_size, int send_buffer_size, bool share_port);
    void bindLocalAddress();
    int boundPort() const;
    int systemBufferSize(int option) const;
    void setMembership(int option, const std::string& group, const char* failure);

    int _socket = -1;
    InetAddress _local_address;
    InetAddress _peer_address;
    bool _connected = false;
    int _receive_buffer_size = 0;
    int _send_buffer_size = 0;
    mutable std::vector<unsigned char> _receive_buffer;
    mutable InetAddress _last_sender;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
