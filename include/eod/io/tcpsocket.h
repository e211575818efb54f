#ifndef EOD_IO_TCPSOCKET_H
#define EOD_IO_TCPSOCKET_H

// One IPv4 TCP socket handle with its local and remote addresses. The socket owns its handle
// and closes it on destruction; it is used by one thread at a time.
//
// Operating-system failures throw SocketError with the call's message, ": " and the
// description of the last socket error (netLibErrorString). Calls in the wrong state throw
// std::invalid_argument "<module>:<line>: <reason>". A failed connect closes the socket; a
// failed bind, send or receive leaves it as it was.
//
// Waits take milliseconds: 0 polls, a negative value waits without limit.

#include <vector>

#include <eod/io/inetaddress.h>

namespace tq {
namespace eod {
namespace io {

#ifndef _WIN32
// The handle of a socket that has none (Winsock defines its own).
constexpr unsigned int INVALID_SOCKET = ~0u;
#endif

class TcpSocket {
public:
    // An owned array of bytes that the socket receives into.
    class Buffer {
    public:
        // Replaces the array by a new one of n bytes (usage error "n >= 0").
        void setSize(int n);
        char* buffer() { return _bytes.data(); }
        const char* buffer() const { return _bytes.data(); }
        int size() const { return static_cast<int>(_bytes.size()); }

    private:
        std::vector<char> _bytes;
    };

    enum SocketOptionFlag {
        FLAG_REUSE_ADDRESS = 0,  // SO_REUSEADDR
        FLAG_TCP_NO_DELAY = 1,   // TCP_NODELAY: Nagle's algorithm off
    };

    // Wraps an existing handle (INVALID_SOCKET for none) and takes ownership of it; a real
    // handle gets its buffers sized at once ("Failed to get socket buffer size.",
    // "Invalid SO_RCVBUF size returned.", "Invalid SO_SNDBUF size returned."; the handle is
    // closed then). The socket counts as not connected.
    explicit TcpSocket(unsigned int handle = INVALID_SOCKET);
    // The same for a connected handle whose addresses are known (accepted connections).
    TcpSocket(unsigned int handle, const InetAddress& local, const InetAddress& remote);
    ~TcpSocket();
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    bool opened() const { return _handle != INVALID_SOCKET; }
    bool connected() const { return _connected; }
    // True once a receive found the connection closed by the peer (until close or the next
    // connect): what tells a closed peer from a wait that ran out, both of which receive 0.
    bool peerClosed() const { return _peer_closed; }

    // Creates the socket and sizes its buffers as above. Usage error "socket already open";
    // failure "Failed to build socket.".
    void open();
    // Closes the handle; harmless on a closed socket.
    void close();

    // Binds to the address; port 0 lets the system choose one, which the local address then
    // holds. Usage errors "socket not open", "socket connected"; failures
    // "Could not bind TCP socket to address.", "Could not determine bound port for TCP socket.".
    void bind(const InetAddress& address);
    // Usage error "un-open socket.". Connecting a connected socket closes it and then raises
    // the usage error "already connected socket.". A failed connect closes the socket and
    // throws "Could not connect TCP socket to address.".
    void connect(const InetAddress& address);
    // Usage error "un-open socket"; failure "Socket Error try to set listening state".
    void listen();
    // The next connection, or null when none arrived within the wait; the caller owns it.
    // Usage error "un-open socket"; failure "Socket Error trying to accept connection".
    TcpSocket* accept(int timeout_ms);

    const InetAddress& getLocalAddress() const { return _local_address; }
    const InetAddress& getRemoteAddress() const { return _remote_address; }
    // The peer of a connected socket.
    const InetAddress& getInetAddress() const { return _remote_address; }

    // Send everything, blocking as long as it takes. Usage error "unconnected socket";
    // failure "Failed to send data.", also when the peer has gone (never a signal).
    void send(const std::vector<unsigned char>& bytes);
    void send(const unsigned char* bytes, unsigned int count);
    // Sends what can be sent while each wait for room in the send buffer ends within
    // timeout_ms; returns the number of bytes sent, fewer than count if a wait ran out.
    unsigned int send(const unsigned char* bytes, unsigned int count, int timeout_ms);

    // Waits up to timeout_ms for data, then reads once. Returns the number of bytes read
    // and appends them to out, which is emptied first unless `append`. Returns 0 and leaves
    // out untouched when the wait ran out; returns 0 after emptying out (unless append)
    // when the peer closed the connection. Usage error "unconnected socket"; failure
    // "Failed to receive data.".
    int receive(std::vector<unsigned char>& out, int timeout_ms, bool append);
    // Whether data (or the peer's close) is waiting; never blocks.
    bool dataReady() const;

    // Failure "Failed to set socket option." (for reading the flag too); a value outside
    // the enumeration throws SocketError "Socket option not supported".
    void setSocketFlag(SocketOptionFlag flag, bool on);
    bool socketFlag(SocketOptionFlag flag) const;
    void enableNagleAlgortihm(bool enable);

private:
    unsigned int sendBytes(const unsigned char* bytes, unsigned int count, bool no_wait);
    bool waitForData(int timeout_ms) const;
    bool waitForSend(int timeout_ms) const;
    void initialiseBufferSizes();
    void setBufferSize(int option, Buffer& buffer);
    unsigned int socketBufferSize(int option) const;
    // The handle as the socket calls take it.
    int fd() const { return static_cast<int>(_handle); }

    unsigned int _handle;
    bool _connected = false;
    bool _peer_closed = false;
    InetAddress _local_address;
    InetAddress _remote_address;
    Buffer _rx_buffer;
    unsigned int _send_chunk_size = 0;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
