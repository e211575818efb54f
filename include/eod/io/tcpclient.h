#ifndef EOD_IO_TCPCLIENT_H
#define EOD_IO_TCPCLIENT_H

#include <eod/io/inetaddress.h>
#include <eod/io/tcpendpoint.h>

namespace tq {
namespace eod {
namespace io {

// The end point that opens its own socket and connects it to a server.
class TcpClient : public TcpEndPoint {
public:
    // Opens the socket (TcpSocket::open); not yet connected.
    TcpClient();
    // Connects to the server (TcpSocket::connect, with its errors), first opening a new
    // socket if the last attempt failed or the client was closed.
    void open(const InetAddress& server);
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
