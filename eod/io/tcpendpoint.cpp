#include <eod/io/tcpendpoint.h>

#include <eod/io/socketerror.h>

#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

TcpEndPoint::TcpEndPoint() : _socket(new TcpSocket()) {}

TcpEndPoint::TcpEndPoint(TcpSocket* socket) : _socket(socket) {
    EOD_REQUIRE(_socket.get() != nullptr, "_socket.get() != 0");
    EOD_REQUIRE(_socket->connected(), "_socket->connected()");
}

TcpEndPoint::TcpEndPoint(const InetAddress& address) : TcpEndPoint() {
    _socket->open();
    _socket->connect(address);
}

TcpEndPoint::~TcpEndPoint() = default;

void TcpEndPoint::send(const std::vector<unsigned char>& bytes) { _socket->send(bytes); }

void TcpEndPoint::send(const unsigned char* bytes, unsigned int count) {
    _socket->send(bytes, count);
}

unsigned int TcpEndPoint::send(const unsigned char* bytes, unsigned int count, int timeout_ms) {
    return _socket->send(bytes, count, timeout_ms);
}

int TcpEndPoint::receive(std::vector<unsigned char>& out, bool append) {
    EOD_REQUIRE(opened(), "opened()");
    return _socket->receive(out, _receive_timeout_ms, append);
}

void TcpEndPoint::setReceiveTimeoutMillis(int timeout_ms) {
    if (timeout_ms < 0) throw SocketError("Invalid timeout value");
    _receive_timeout_ms = timeout_ms;
}

bool TcpEndPoint::dataReady() const { return _socket->dataReady(); }

void TcpEndPoint::close() { _socket->close(); }

bool TcpEndPoint::opened() const { return _socket->opened(); }

void TcpEndPoint::enableNagleAlgortihm(bool enable) { _socket->enableNagleAlgortihm(enable); }

InetAddress TcpEndPoint::localAddress() const { return _socket->getLocalAddress(); }

}  // namespace io
}  // namespace eod
}  // namespace tq
