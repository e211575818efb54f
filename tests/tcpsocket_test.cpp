#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <eod/eod.h>

#include "nettesthelpers.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;
using nettest::Connection;
using nettest::kPatientMs;
using nettest::loopback;

namespace {

const char* const kModule = "io/tcpsocket";
const std::string kReset = "The connection was forcibly closed by the remote host.";

using Bytes = std::vector<unsigned char>;

// Receives until `count` bytes have arrived or the peer closes.
Bytes receiveBytes(TcpSocket& socket, std::size_t count) {
    Bytes received;
    while (received.size() < count && socket.receive(received, kPatientMs, true) > 0) {
    }
    return received;
}

TEST(TcpSocket, CallsInTheWrongStateAreUsageErrors) {
    TcpSocket closed;
    Bytes out{1, 2};
    const unsigned char byte = 0;
    const struct {
        const char* reason;
        std::function<void()> call;
    } cases[] = {
        {"socket not open", [&] { closed.bind(loopback(0)); }},
        {"un-open socket.", [&] { closed.connect(loopback(1)); }},
        {"un-open socket", [&] { closed.listen(); }},
        {"un-open socket", [&] { closed.accept(0); }},
        {"unconnected socket", [&] { closed.send(&byte, 1); }},
        {"unconnected socket", [&] { closed.send(Bytes{1}); }},
        {"unconnected socket", [&] { closed.send(&byte, 1, 0); }},
        {"unconnected socket", [&] { closed.receive(out, 0, false); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        EXPECT_USAGE_ERROR(c.call(), kModule, c.reason);
    }
    EXPECT_EQ(out, (Bytes{1, 2}));

    TcpSocket opened;
    opened.open();
    EXPECT_USAGE_ERROR(opened.open(), kModule, "socket already open");
    EXPECT_TRUE(opened.opened());
}

TEST(TcpSocket, OpenAndCloseFollowTheHandle) {
    TcpSocket socket;
    EXPECT_FALSE(socket.opened());
    EXPECT_FALSE(socket.connected());
    socket.open();
    EXPECT_TRUE(socket.opened());
    socket.close();
    EXPECT_FALSE(socket.opened());
    socket.close();
    socket.open();
    EXPECT_TRUE(socket.opened());
}

TEST(TcpSocket, BindingToPortZeroLearnsThePort) {
    TcpSocket socket;
    socket.open();
    socket.bind(loopback(0));
    EXPECT_NE(socket.getLocalAddress().getPort(), 0);
    EXPECT_EQ(socket.getLocalAddress().getHostIP(), "127.0.0.1");
}

TEST(TcpSocket, BindingATakenAddressFails) {
    const std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    TcpSocket socket;
    socket.open();
    try {
        socket.bind(listener->getLocalAddress());
        FAIL() << "bound twice";
    } catch (const SocketError& e) {
        EXPECT_EQ(
            std::string(e.what()),
            "Could not bind TCP socket to address.: The specified address is already in use.");
    }
    EXPECT_TRUE(socket.opened());
}

TEST(TcpSocket, AcceptReturnsNullWhenNobodyCalls) {
    const std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    EXPECT_EQ(listener->accept(0), nullptr);
    EXPECT_EQ(listener->accept(20), nullptr);
}

TEST(TcpSocket, AcceptedConnectionKnowsBothEnds) {
    Connection c;
    ASSERT_NE(c.server, nullptr);
    EXPECT_TRUE(c.server->connected());
    EXPECT_TRUE(c.client->connected());
    EXPECT_EQ(c.server->getLocalAddress(), c.listener->getLocalAddress());
    EXPECT_EQ(c.server->getRemoteAddress(), c.client->getLocalAddress());
    EXPECT_EQ(c.client->getInetAddress(), c.listener->getLocalAddress());
    EXPECT_NE(c.client->getLocalAddress().getPort(), 0);
    EXPECT_USAGE_ERROR(c.server->bind(loopback(0)), kModule, "socket connected");
}

TEST(TcpSocket, ASecondConnectClosesTheSocket) {
    Connection c;
    EXPECT_USAGE_ERROR(c.client->connect(c.listener->getLocalAddress()), kModule,
                       "already connected socket.");
    EXPECT_FALSE(c.client->opened());
    EXPECT_FALSE(c.client->connected());
}

TEST(TcpSocket, ARefusedConnectClosesTheSocket) {
    // A bound socket that does not listen refuses connections.
    TcpSocket bound;
    bound.open();
    bound.bind(loopback(0));
    TcpSocket socket;
    socket.open();
    try {
        socket.connect(bound.getLocalAddress());
        FAIL() << "connected";
    } catch (const SocketError& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Could not connect TCP socket to address.: The attempt to connect was "
                  "forcefully rejected.");
    }
    EXPECT_FALSE(socket.opened());
    EXPECT_FALSE(socket.connected());
}

// Does nothing; installed without SA_RESTART, so it interrupts blocking calls.
extern "C" void interruptOnly(int) {}

TEST(TcpSocket, AConnectInterruptedByASignalStillConnects) {
    // A listener whose accept queue holds a single connection, taken by `first`: the next
    // connect waits (its SYN is sent again after a second) until the queue drains.
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(listener, 0);
    const InetAddress any_port = loopback(0);
    ASSERT_EQ(::bind(listener, any_port.getSockAddr(), sizeof(sockaddr_in)), 0);
    sockaddr_in bound{};
    socklen_t length = sizeof bound;
    ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&bound), &length), 0);
    ASSERT_EQ(::listen(listener, 0), 0);
    const InetAddress address(bound);
    TcpSocket first;
    first.open();
    first.connect(address);

    struct sigaction action {};
    action.sa_handler = interruptOnly;
    struct sigaction previous {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &previous), 0);
    const pthread_t connecting = ::pthread_self();
    std::atomic<bool> connect_returned{false};
    std::thread interrupter([&] {
        const auto signalFor = [&](std::chrono::milliseconds span) {
            const auto end = std::chrono::steady_clock::now() + span;
            while (!connect_returned && std::chrono::steady_clock::now() < end) {
                ::pthread_kill(connecting, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        };
        signalFor(std::chrono::milliseconds(300));
        ::close(::accept(listener, nullptr, nullptr));  // room for the waiting connection
        signalFor(std::chrono::milliseconds(kPatientMs));
    });

    TcpSocket second;
    second.open();
    EXPECT_NO_THROW(second.connect(address));
    connect_returned = true;
    interrupter.join();
    ::sigaction(SIGUSR1, &previous, nullptr);
    ::close(listener);
    EXPECT_TRUE(second.connected());
    EXPECT_EQ(second.getInetAddress(), address);
}

TEST(TcpSocket, ReceiveReplacesOrAppends) {
    Connection c;
    c.client->send(Bytes{1, 2, 3});
    Bytes out{9};
    EXPECT_EQ(receiveBytes(*c.server, 3), (Bytes{1, 2, 3}));
    c.client->send(Bytes{4});
    ASSERT_EQ(c.server->receive(out, kPatientMs, true), 1);
    EXPECT_EQ(out, (Bytes{9, 4}));
    c.client->send(Bytes{5});
    ASSERT_EQ(c.server->receive(out, kPatientMs, false), 1);
    EXPECT_EQ(out, (Bytes{5}));
}

TEST(TcpSocket, AnExpiredWaitLeavesTheOutputUntouched) {
    Connection c;
    Bytes out{7, 8};
    EXPECT_EQ(c.server->receive(out, 0, false), 0);
    EXPECT_EQ(c.server->receive(out, 20, false), 0);
    EXPECT_EQ(out, (Bytes{7, 8}));
    EXPECT_FALSE(c.server->dataReady());
    EXPECT_FALSE(c.server->peerClosed());
}

TEST(TcpSocket, APeerThatClosesGivesZeroBytes) {
    Connection c;
    c.client->close();
    Bytes out{7};
    EXPECT_EQ(c.server->receive(out, kPatientMs, false), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(c.server->dataReady());
    EXPECT_TRUE(c.server->peerClosed());
    c.server->close();
    EXPECT_FALSE(c.server->peerClosed());
}

TEST(TcpSocket, SendingToAPeerThatWentAwayThrowsInsteadOfSignalling) {
    Connection c;
    c.server->close();
    const Bytes byte{1};
    std::string error;
    // The first sends may still be taken; once the peer's reset is in, they fail.
    for (int attempt = 0; attempt < 500 && error.empty(); ++attempt) {
        try {
            c.client->send(byte);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        } catch (const SocketError& e) {
            error = e.what();
        }
    }
    EXPECT_EQ(error, "Failed to send data.: " + kReset);
    EXPECT_TRUE(c.client->opened());
}

TEST(TcpSocket, ATimedSendStopsWhenThePeerStopsReading) {
    Connection c;
    // More than the send and receive buffers of loopback can hold.
    const Bytes lots(64u << 20, 0x5a);
    const unsigned int sent =
        c.client->send(lots.data(), static_cast<unsigned int>(lots.size()), 50);
    EXPECT_GT(sent, 0u);
    EXPECT_LT(sent, lots.size());
}

TEST(TcpSocket, ATimedSendThatFitsSendsEverything) {
    Connection c;
    const Bytes some(1000, 0x11);
    EXPECT_EQ(c.client->send(some.data(), 1000, kPatientMs), 1000u);
    EXPECT_EQ(receiveBytes(*c.server, 1000), some);
}

TEST(TcpSocket, ABlockingSendOutlastsTheBuffers) {
    Connection c;
    Bytes lots(8u << 20);
    for (std::size_t i = 0; i < lots.size(); ++i) lots[i] = static_cast<unsigned char>(i * 7);
    std::thread reader([&] { EXPECT_EQ(receiveBytes(*c.server, lots.size()), lots); });
    c.client->send(lots);
    reader.join();
}

TEST(TcpSocket, SocketFlags) {
    TcpSocket socket;
    socket.open();
    for (auto flag : {TcpSocket::FLAG_REUSE_ADDRESS, TcpSocket::FLAG_TCP_NO_DELAY}) {
        SCOPED_TRACE(flag);
        socket.setSocketFlag(flag, true);
        EXPECT_TRUE(socket.socketFlag(flag));
        socket.setSocketFlag(flag, false);
        EXPECT_FALSE(socket.socketFlag(flag));
    }
    socket.enableNagleAlgortihm(false);
    EXPECT_TRUE(socket.socketFlag(TcpSocket::FLAG_TCP_NO_DELAY));
    socket.enableNagleAlgortihm(true);
    EXPECT_FALSE(socket.socketFlag(TcpSocket::FLAG_TCP_NO_DELAY));

    const auto unknown = static_cast<TcpSocket::SocketOptionFlag>(2);
    try {
        socket.setSocketFlag(unknown, true);
        FAIL() << "set";
    } catch (const SocketError& e) {
        EXPECT_STREQ(e.what(), "Socket option not supported");
    }
    EXPECT_THROW(socket.socketFlag(unknown), SocketError);
}

TEST(TcpSocket, SocketFlagsOfAClosedSocketFail) {
    TcpSocket closed;
    try {
        closed.setSocketFlag(TcpSocket::FLAG_REUSE_ADDRESS, true);
        FAIL() << "set";
    } catch (const SocketError& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Failed to set socket option.: For Windows CE AF_IRDA sockets only: the shared "
                  "serial port is busy.");
    }
    EXPECT_THROW(closed.socketFlag(TcpSocket::FLAG_TCP_NO_DELAY), SocketError);
}

TEST(TcpSocketBuffer, HoldsTheSizeAskedFor) {
    TcpSocket::Buffer buffer;
    EXPECT_EQ(buffer.size(), 0);
    buffer.setSize(16);
    EXPECT_EQ(buffer.size(), 16);
    buffer.buffer()[15] = 'x';
    TcpSocket::Buffer copy;
    copy = buffer;
    EXPECT_EQ(copy.buffer()[15], 'x');
    EXPECT_USAGE_ERROR(buffer.setSize(-1), kModule, "n >= 0");
}

TEST(TcpEndPoint, TakesOnlyConnectedSockets) {
    const char* const module = "io/tcpendpoint";
    EXPECT_USAGE_ERROR(TcpEndPoint end(nullptr), module, "_socket.get() != 0");
    EXPECT_USAGE_ERROR(TcpEndPoint end(new TcpSocket()), module, "_socket->connected()");
    TcpEndPoint unopened;
    Bytes out;
    EXPECT_USAGE_ERROR(unopened.receive(out, false), module, "opened()");
}

TEST(TcpEndPoint, ReceiveTimeout) {
    TcpEndPoint end;
    EXPECT_EQ(end.receiveTimeoutMillis(), 100);
    end.setReceiveTimeoutMillis(0);
    EXPECT_EQ(end.receiveTimeoutMillis(), 0);
    try {
        end.setReceiveTimeoutMillis(-1);
        FAIL() << "accepted";
    } catch (const SocketError& e) {
        EXPECT_STREQ(e.what(), "Invalid timeout value");
    }
    EXPECT_EQ(end.receiveTimeoutMillis(), 0);
}

TEST(TcpEndPoint, ExchangesBytesWithAClient) {
    const std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    TcpClient client;
    EXPECT_TRUE(client.opened());
    client.open(listener->getLocalAddress());
    TcpEndPoint server(listener->accept(kPatientMs));
    EXPECT_EQ(client.localAddress(), server.socket().getRemoteAddress());
    server.setReceiveTimeoutMillis(kPatientMs);
    client.enableNagleAlgortihm(false);

    client.send(Bytes{1, 2});
    const unsigned char three = 3;
    client.send(&three, 1);
    EXPECT_EQ(client.send(&three, 1, kPatientMs), 1u);
    Bytes out;
    while (out.size() < 4 && server.receive(out, true) > 0) {
    }
    EXPECT_EQ(out, (Bytes{1, 2, 3, 3}));
    EXPECT_FALSE(server.dataReady());
    server.setReceiveTimeoutMillis(0);
    EXPECT_EQ(server.receive(out, false), 0);
    server.close();
    EXPECT_FALSE(server.opened());
}

TEST(TcpEndPoint, ConnectsOnConstruction) {
    const std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    TcpEndPoint end(listener->getLocalAddress());
    EXPECT_TRUE(end.socket().connected());
    std::unique_ptr<TcpSocket> accepted(listener->accept(kPatientMs));
    EXPECT_NE(accepted, nullptr);
}

TEST(TcpClient, TriesAgainAfterARefusal) {
    TcpSocket bound;
    bound.open();
    bound.bind(loopback(0));
    TcpClient client;
    EXPECT_THROW(client.open(bound.getLocalAddress()), SocketError);
    EXPECT_FALSE(client.opened());
    const std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    client.open(listener->getLocalAddress());
    EXPECT_TRUE(client.socket().connected());
}

}  // namespace
