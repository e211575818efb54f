// UDP sockets on loopback; multicast in a private network namespace made by the test.

#include <arpa/inet.h>
#include <net/if.h>
#include <net/route.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <eod/io/datagramsocket.h>
#include <eod/io/socketerror.h>

#include "nettesthelpers.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;
using Bytes = std::vector<unsigned char>;
using eodtest::thrownMessage;
using nettest::loopback;

namespace {

const char* const kModule = "io/datagramsocket";
// Long enough never to expire on a loaded machine; a wait only ends this way on failure.
const int kWaitMs = 5000;

InetAddress loopbackOf(const DatagramSocket& socket) {
    return loopback(socket.getLocalAddress().getPort());
}

Bytes pattern(std::size_t n) {
    Bytes bytes(n);
    for (std::size_t i = 0; i < n; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    return bytes;
}

// `from` goes in as a const reference and stays as it was; the sender is lastSender().
Bytes receiveFrom(const DatagramSocket& socket, InetAddress& from) {
    Bytes out{0xEE};
    const InetAddress given = from;
    const int size = socket.receiveDatagram(out, from, kWaitMs, false);
    EXPECT_EQ(size, static_cast<int>(out.size()));
    EXPECT_EQ(from, given);
    from = socket.lastSender();
    return out;
}

Bytes receive(const DatagramSocket& socket) {
    InetAddress from;
    return receiveFrom(socket, from);
}

}  // namespace

TEST(DatagramSocket, BoundOnConstruction) {
    const DatagramSocket socket;
    EXPECT_GE(socket.getSocket(), 0);
    EXPECT_GT(socket.getLocalAddress().getPort(), 0);
    EXPECT_FALSE(socket.connected());
    int system_size = 0;
    socklen_t length = sizeof system_size;
    ASSERT_EQ(::getsockopt(socket.getSocket(), SOL_SOCKET, SO_RCVBUF, &system_size, &length), 0);
    EXPECT_EQ(socket.getReceiveBufferSize(), system_size);
    EXPECT_GT(socket.getSendBufferSize(), 0);

    // The port asked for is the port bound; a second plain socket cannot have it too.
    const int port = socket.getLocalAddress().getPort();
    EXPECT_EQ(thrownMessage<SocketError>([&] { DatagramSocket again(port); }),
              "Could not bind UDP command socket to address.: The specified address is already "
              "in use.");
}

TEST(DatagramSocket, SharedPortWithReuseAddress) {
    const DatagramSocket first(std::vector<std::string>{}, 0);
    const int port = first.getLocalAddress().getPort();
    const DatagramSocket second(std::vector<std::string>{}, port);
    EXPECT_EQ(second.getLocalAddress().getPort(), port);
}

TEST(DatagramSocket, BufferSizes) {
    DatagramSocket socket(0, 4096, 8192);
    EXPECT_EQ(socket.getReceiveBufferSize(), 4096);
    EXPECT_EQ(socket.getSendBufferSize(), 8192);
    int system_size = 0;
    socklen_t length = sizeof system_size;
    ASSERT_EQ(::getsockopt(socket.getSocket(), SOL_SOCKET, SO_RCVBUF, &system_size, &length), 0);
    EXPECT_GE(system_size, 4096);

    for (int bad : {0, -1}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(socket.setReceiveBufferSize(bad), kModule,
                           "buffer size must be positive");
        EXPECT_USAGE_ERROR(socket.setSendBufferSize(bad), kModule, "buffer size must be positive");
    }
    EXPECT_EQ(socket.getReceiveBufferSize(), 4096);
    EXPECT_USAGE_ERROR(DatagramSocket(0, -5), kModule, "buffer size must be positive");
    EXPECT_USAGE_ERROR(DatagramSocket(0, 0, -5), kModule, "buffer size must be positive");
}

TEST(DatagramSocket, UnicastToAnyAddress) {
    const DatagramSocket sender, receiver;
    sender.sendDatagram(Bytes{1, 2, 3}, loopbackOf(receiver));
    InetAddress from;
    EXPECT_EQ(receiveFrom(receiver, from), (Bytes{1, 2, 3}));
    EXPECT_EQ(from, loopbackOf(sender));

    // Appending keeps what `out` held.
    sender.sendDatagram(Bytes{4}, loopbackOf(receiver));
    Bytes out{9};
    EXPECT_EQ(receiver.receiveDatagram(out, from, kWaitMs, true), 1);
    EXPECT_EQ(out, (Bytes{9, 4}));
}

TEST(DatagramSocket, ConnectedPeer) {
    DatagramSocket sender;
    const DatagramSocket receiver, stranger;
    EXPECT_USAGE_ERROR(sender.getInetAddress(), kModule, "Socket is not connected.");
    EXPECT_USAGE_ERROR(sender.sendDatagram(Bytes{1}), kModule,
                       "Must connect socket before sending.");

    sender.connectSocket(loopbackOf(receiver));
    EXPECT_TRUE(sender.connected());
    EXPECT_EQ(sender.getInetAddress(), loopbackOf(receiver));
    sender.sendDatagram(Bytes{5, 6});
    EXPECT_EQ(receive(receiver), (Bytes{5, 6}));

    // While connected only the peer is heard: the stranger's datagram finds no socket.
    stranger.sendDatagram(Bytes{7}, loopbackOf(sender));
    receiver.sendDatagram(Bytes{8}, loopbackOf(sender));
    EXPECT_EQ(receive(sender), Bytes{8});
    EXPECT_FALSE(sender.dataReady());

    // Disconnecting keeps the port, also one the system chose.
    const int port = sender.getLocalAddress().getPort();
    sender.disconnectSocket();
    EXPECT_FALSE(sender.connected());
    EXPECT_USAGE_ERROR(sender.getInetAddress(), kModule, "Socket is not connected.");
    EXPECT_USAGE_ERROR(sender.sendDatagram(Bytes{1}), kModule,
                       "Must connect socket before sending.");
    sockaddr_in bound{};
    socklen_t length = sizeof bound;
    ASSERT_EQ(::getsockname(sender.getSocket(), reinterpret_cast<sockaddr*>(&bound), &length), 0);
    EXPECT_EQ(ntohs(bound.sin_port), port);
    EXPECT_EQ(sender.getLocalAddress().getPort(), port);
    stranger.sendDatagram(Bytes{9}, loopbackOf(sender));
    EXPECT_EQ(receive(sender), Bytes{9});
}

TEST(DatagramSocket, RefusedPeerIsReportedOnReceive) {
    DatagramSocket sender;
    {
        const DatagramSocket gone;
        sender.connectSocket(loopbackOf(gone));
    }
    sender.sendDatagram(Bytes{1});
    InetAddress from;
    Bytes out;
    EXPECT_EQ(
        thrownMessage<SocketError>([&] { sender.receiveDatagram(out, from, kWaitMs, false); }),
        "Failed to receive datagram.: The attempt to connect was forcefully rejected.");
}

TEST(DatagramSocket, SizeLimit) {
    DatagramSocket sender;
    const DatagramSocket receiver;
    sender.connectSocket(loopbackOf(receiver));
    const std::string too_large = "Buffers exceeds maximum size for a datagram.";
    const Bytes limit_plus_one(DatagramSocket::MAX_DATAGRAM_SIZE + 1);
    EXPECT_USAGE_ERROR(sender.sendDatagram(limit_plus_one), kModule, too_large);
    EXPECT_USAGE_ERROR(sender.sendDatagram(limit_plus_one, loopbackOf(receiver)), kModule,
                       too_large);

    // 65535 bytes pass the limit, but IPv4 carries at most 65507 bytes in one datagram.
    const Bytes limit(DatagramSocket::MAX_DATAGRAM_SIZE);
    EXPECT_EQ(thrownMessage<SocketError>([&] { sender.sendDatagram(limit); }),
              "Failed to send datagram.: The message was too large to fit in the buffer provided "
              "and was truncated");
    const Bytes largest = pattern(65507);
    sender.sendDatagram(largest);
    EXPECT_EQ(receive(receiver), largest);
}

TEST(DatagramSocket, OversizedDatagramIsDroppedSilently) {
    const DatagramSocket sender;
    const DatagramSocket receiver(0, 1000);
    InetAddress from;
    Bytes out{0xEE};
    sender.sendDatagram(pattern(1001), loopbackOf(receiver));
    EXPECT_EQ(receiver.receiveDatagram(out, from, kWaitMs, false), 0);
    EXPECT_EQ(out, Bytes{0xEE});
    EXPECT_EQ(from, InetAddress());
    EXPECT_EQ(receiver.lastSender(), loopbackOf(sender));
    EXPECT_FALSE(receiver.dataReady());

    sender.sendDatagram(pattern(1000), loopbackOf(receiver));
    EXPECT_EQ(receive(receiver), pattern(1000));
}

TEST(DatagramSocket, EmptyDatagramAndExpiredWait) {
    const DatagramSocket sender, receiver;
    InetAddress from;
    Bytes out{0xEE};
    for (int wait_ms : {0, 10}) {
        SCOPED_TRACE(wait_ms);
        EXPECT_EQ(receiver.receiveDatagram(out, from, wait_ms, false), 0);
        EXPECT_EQ(out, Bytes{0xEE});
    }
    EXPECT_FALSE(receiver.dataReady());

    sender.sendDatagram(Bytes{}, loopbackOf(receiver));
    EXPECT_TRUE(receiver.waitForData(kWaitMs));
    EXPECT_TRUE(receiver.dataReady());
    EXPECT_EQ(receiver.receiveDatagram(out, from, kWaitMs, true), 0);
    EXPECT_EQ(out, Bytes{0xEE});
    sender.sendDatagram(Bytes{}, loopbackOf(receiver));
    EXPECT_EQ(receiver.receiveDatagram(out, from, kWaitMs, false), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(receiver.lastSender(), loopbackOf(sender));
}

TEST(DatagramSocket, BroadcastOnLoopback) {
    DatagramSocket sender;
    const DatagramSocket receiver;
    // The broadcast address of 127.0.0.0/8 stays on the loopback interface.
    const InetAddress broadcast(receiver.getLocalAddress().getPort(), "127.255.255.255");
    EXPECT_EQ(thrownMessage<SocketError>([&] { sender.sendDatagram(Bytes{1}, broadcast); }),
              "Failed to send datagram.: No error message is defined for this exception.");
    sender.enabledBroadcast(true);
    sender.sendDatagram(Bytes{2}, broadcast);
    EXPECT_EQ(receive(receiver), Bytes{2});
    sender.enabledBroadcast(false);
    EXPECT_THROW(sender.sendDatagram(Bytes{3}, broadcast), SocketError);
}

namespace {

// Moves the calling thread into a network namespace of its own whose loopback interface is
// up and carries multicast. Returns an empty string, or why that is not possible here.
std::string enterPrivateNetwork() {
    const auto failure = [](const char* what) {
        return std::string(what) + ": " + std::strerror(errno);
    };
    if (::unshare(CLONE_NEWNET) != 0) {
        return failure("cannot create a network namespace");
    }
    const int control = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (control < 0) {
        return failure("cannot open a control socket");
    }
    ifreq lo{};
    std::strcpy(lo.ifr_name, "lo");
    sockaddr_in destination{};
    destination.sin_family = AF_INET;
    ::inet_pton(AF_INET, "224.0.0.0", &destination.sin_addr);
    sockaddr_in mask = destination;
    ::inet_pton(AF_INET, "240.0.0.0", &mask.sin_addr);
    rtentry route{};
    std::memcpy(&route.rt_dst, &destination, sizeof destination);
    std::memcpy(&route.rt_genmask, &mask, sizeof mask);
    route.rt_flags = RTF_UP;
    char device[] = "lo";
    route.rt_dev = device;
    std::string why;
    if (::ioctl(control, SIOCGIFFLAGS, &lo) != 0) {
        why = failure("cannot read the loopback flags");
    } else if (lo.ifr_flags |= IFF_UP | IFF_MULTICAST, ::ioctl(control, SIOCSIFFLAGS, &lo) != 0) {
        why = failure("cannot bring up the loopback interface");
    } else if (::ioctl(control, SIOCADDRT, &route) != 0) {
        why = failure("cannot route multicast to the loopback interface");
    }
    ::close(control);
    return why;
}

void multicastInPrivateNetwork() {
    const std::string group = "239.1.2.3";
    DatagramSocket first(std::vector<std::string>{group}, 0);
    const int port = first.getLocalAddress().getPort();
    const DatagramSocket second(std::vector<std::string>{group}, port);
    const DatagramSocket sender;
    const InetAddress to_group(port, group);

    sender.sendDatagram(Bytes{1, 2}, to_group);
    EXPECT_EQ(receive(first), (Bytes{1, 2}));
    EXPECT_EQ(receive(second), (Bytes{1, 2}));

    // One datagram reaches every member at once: once the second has it, the first, having
    // left, would have it too.
    first.unsubscribeMulticast(group);
    sender.sendDatagram(Bytes{3}, to_group);
    EXPECT_EQ(receive(second), Bytes{3});
    EXPECT_FALSE(first.dataReady());
    first.subscribeMulticast(group);
    sender.sendDatagram(Bytes{4}, to_group);
    EXPECT_EQ(receive(first), Bytes{4});

    EXPECT_EQ(thrownMessage<SocketError>([&] { first.unsubscribeMulticast("239.9.9.9"); }),
              "Failed to drop membership of multicast group: The specified address is not "
              "available from the local machine.");
    EXPECT_EQ(thrownMessage<SocketError>([&] { first.subscribeMulticast("127.0.0.1"); }),
              "Failed to request membership of multicast group: The socket is not already bound "
              "to an address.");
    for (const char* bad : {"", "239.1.2", "group", "239.1.2.3.4"}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(first.subscribeMulticast(bad), kModule,
                           "multicast group is not a dotted IPv4 address");
        EXPECT_USAGE_ERROR(first.unsubscribeMulticast(bad), kModule,
                           "multicast group is not a dotted IPv4 address");
    }
}

}  // namespace

TEST(DatagramSocket, MulticastJoinSendReceiveLeave) {
    // The namespace belongs to one thread, so joining groups never reaches a real network.
    std::string skipped;
    std::thread private_network([&] {
        skipped = enterPrivateNetwork();
        if (skipped.empty()) {
            multicastInPrivateNetwork();
        }
    });
    private_network.join();
    if (!skipped.empty()) {
        GTEST_SKIP() << skipped;
    }
}
