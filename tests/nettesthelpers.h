#ifndef EOD_TESTS_NETTESTHELPERS_H
#define EOD_TESTS_NETTESTHELPERS_H

// Helpers shared by the transport tests.

#include <cctype>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>

namespace nettest {

// The text of the std::invalid_argument that f throws; "no usage error" when it throws none.
template <class F>
std::string usageErrorText(F&& f) {
    try {
        f();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "no usage error";
}

// Passes when text reads "<module>:<line>: <reason>", as "eod/io/tcpsocket.cpp:12: x".
inline testing::AssertionResult isUsageError(const std::string& text, const std::string& module,
                                             const std::string& reason) {
    std::size_t p = module.size() + 1;
    bool ok = text.compare(0, p, module + ":") == 0 && p < text.size() &&
              std::isdigit(static_cast<unsigned char>(text[p]));
    while (ok && p < text.size() && std::isdigit(static_cast<unsigned char>(text[p]))) ++p;
    ok = ok && text.compare(p, std::string::npos, ": " + reason) == 0;
    if (ok) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "'" << text << "' is not '" << module << ":<line>: " << reason << "'";
}

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
