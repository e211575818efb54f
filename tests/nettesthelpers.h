#ifndef EOD_TESTS_NETTESTHELPERS_H
#define EOD_TESTS_NETTESTHELPERS_H

// Helpers shared by the transport tests.

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>

namespace nettest {

// Waits long enough for anything on loopback, and bounds a test that goes wrong.
const int kPatientMs = 5000;

inline tq::eod::io::InetAddress loopback(int port) {
    return tq::eod::io::InetAddress(port, "127.0.0.1");
}

// A socket listening on 127.0.0.1 at a port the system chose.
inline std::unique_ptr<tq::eod::io::TcpSocket> listenOnLoopback() {
    std::unique_ptr<tq::eod::io::TcpSocket> listener(new tq::eod::io::TcpSocket());
    listener->open();
    listener->bind(loopback(0));
    listener->listen();
    return listener;
}

// Both ends of one loopback connection.
struct Connection {
    std::unique_ptr<tq::eod::io::TcpSocket> listener = listenOnLoopback();
    std::unique_ptr<tq::eod::io::TcpSocket> client{new tq::eod::io::TcpSocket()};
    std::unique_ptr<tq::eod::io::TcpSocket> server;

    Connection() {
        client->open();
        client->connect(loopback(listener->getLocalAddress().getPort()));
        server.reset(listener->accept(kPatientMs));
    }
};

}  // namespace nettest

#endif
