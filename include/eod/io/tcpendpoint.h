#ifndef EOD_IO_TCPENDPOINT_H
#define EOD_IO_TCPENDPOINT_H

// One end of a TCP connection: the sole owner of a TcpSocket, plus the wait that receive
// applies (100 ms unless set). Errors are those of TcpSocket.

#include <memory>
#include <vector>

#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>

namespace tq {
namespace eod {
namespace io {

class TcpEndPoint {
public:
    // A socket without a handle.
    TcpEndPoint();
    // Takes ownership of a connected socket, such as one that TcpSocket::accept returned.
    // Usage errors "_socket.get() != 0" and "_socket->connected()" (the socket is deleted).
    explicit TcpEndPoint(TcpSocket* socket);
    // A new socket, opened and connected to the address.
    explicit TcpEndPoint(const InetAddress& address);
    virtual ~TcpEndPoint();
    TcpEndPoint(const TcpEndPoint&) = delete;
    TcpEndPoint& operator=(const TcpEndPoint&) = delete;

    void send(const std::vector<unsigned char>& bytes);
    void send(const unsigned char* bytes, unsigned int count);
    unsigned int send(const unsigned char* bytes, unsigned int count, int timeout_ms);
    // TcpSocket::receive with the receive timeout. Usage error "opened()" on a socket
    // without handle.
    int receive(std::vector<unsigned char>& out, bool append);

    // A negative value throws SocketError "Invalid timeout value"; 0 polls.
    void setReceiveTimeoutMillis(int timeout_ms);
    int receiveTimeoutMillis() const { return _receive_timeout_ms; }

    bool dataReady() const;
    void close();
    bool opened() const;
    TcpSocket& socket() { return *_socket; }
    const TcpSocket& socket() const { return *_socket; }
    void enableNagleAlgortihm(bool enable);
    // The address and port of this end.
    InetAddress localAddress() const;

private:
    std::unique_ptr<TcpSocket> _socket;
    int _receive_timeout_ms = 100;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
