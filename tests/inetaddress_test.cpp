#include <sstream>
#include <string>

#include <arpa/inet.h>

#include <gtest/gtest.h>

#include <eod/eod.h>

#include "nettesthelpers.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

// A DNS label may hold at most 63 characters, so the resolver refuses this name without
// asking any server: the test stays on this machine.
const std::string kUnresolvable = std::string(64, 'a') + ".invalid";

const char* const kModule = "io/inetaddress";

TEST(InetAddress, StartsAsTheWildcardAddress) {
    const InetAddress address(1234);
    EXPECT_EQ(address.getHostIP(), "0.0.0.0");
    EXPECT_EQ(address.getPort(), 1234);
    EXPECT_EQ(InetAddress().getPort(), 0);
    const sockaddr_in* raw = reinterpret_cast<const sockaddr_in*>(address.getSockAddr());
    EXPECT_EQ(raw->sin_family, AF_INET);
    EXPECT_EQ(raw->sin_port, htons(1234));
    EXPECT_EQ(raw->sin_addr.s_addr, htonl(INADDR_ANY));
}

TEST(InetAddress, PortsOutsideSixteenBitsAreUsageErrors) {
    InetAddress address(80);
    for (int bad : {-1, 65536}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(address.setPort(bad), kModule, "port out of range");
        EXPECT_EQ(address.getPort(), 80);
    }
    address.setPort(65535);
    EXPECT_EQ(address.getPort(), 65535);
}

TEST(InetAddress, SetHostTakesLocalhostAndDottedAddressesWithoutLookup) {
    InetAddress address(1);
    EXPECT_TRUE(address.setHost("localhost"));
    EXPECT_EQ(address.getHostIP(), "127.0.0.1");
    EXPECT_EQ(address.getHostName(false), "localhost");

    const struct {
        const char* text;
        const char* ip;
    } dotted[] = {
        {"10.1.2.3", "10.1.2.3"}, {"255.255.255.255", "255.255.255.255"}, {"0.0.0.0", "0.0.0.0"}};
    for (const auto& d : dotted) {
        SCOPED_TRACE(d.text);
        EXPECT_TRUE(address.setHost(d.text));
        EXPECT_EQ(address.getHostIP(), d.ip);
        // A changed address forgets the old name and does not look a new one up.
        EXPECT_EQ(address.getHostName(false), d.ip);
        EXPECT_EQ(address.getPort(), 1);
    }
}

// The resolver, not the dotted-address parser, reads "127.1" and a whole address written as
// one decimal number; neither needs a server.
TEST(InetAddress, SetHostResolvesOtherForms) {
    InetAddress address(1);
    EXPECT_TRUE(address.setHost("127.1"));
    EXPECT_EQ(address.getHostIP(), "127.0.0.1");
    EXPECT_EQ(address.getHostName(false), "127.1");
    EXPECT_TRUE(address.setHost(std::to_string(ntohl(inet_addr("10.20.30.40")))));
    EXPECT_EQ(address.getHostIP(), "10.20.30.40");
}

TEST(InetAddress, AResolvedOwnAddressBecomesLoopback) {
    for (const in_addr& own : InetAddress::getLocalAddressList()) {
        SCOPED_TRACE(InetAddress::ipAddrToString(own));
        InetAddress address(1);
        ASSERT_TRUE(address.setHost(std::to_string(ntohl(own.s_addr))));
        EXPECT_EQ(address.getHostIP(), "127.0.0.1");
        // Written as a dotted address it is taken as it stands.
        ASSERT_TRUE(address.setHost(InetAddress::ipAddrToString(own)));
        EXPECT_EQ(address.getHostIP(), InetAddress::ipAddrToString(own));
    }
}

TEST(InetAddress, AnUnknownNameLeavesTheAddressAndExplainsWhy) {
    InetAddress address(7, "10.0.0.1");
    EXPECT_FALSE(address.setHost(kUnresolvable));
    EXPECT_EQ(address.getHostIP(), "10.0.0.1");
    EXPECT_EQ(address.getPort(), 7);
    EXPECT_EQ(netLibErrorString("lookup"), "lookup: Authoritative answer host not found.");
}

TEST(InetAddress, ConstructingFromAnUnknownNameKeepsTheWildcardAddress) {
    const InetAddress address(7, kUnresolvable);
    EXPECT_EQ(address.getHostIP(), "0.0.0.0");
    EXPECT_EQ(address.getPort(), 7);
}

TEST(InetAddress, ResolvingAnUnknownNameThrows) {
    EXPECT_EQ(InetAddress::resolve(9, "10.0.0.1"), InetAddress(9, "10.0.0.1"));
    try {
        InetAddress::resolve(7, kUnresolvable);
        FAIL() << "no exception";
    } catch (const InetAddressException& e) {
        EXPECT_EQ(std::string(e.what()), "Could not resolve host '" + kUnresolvable +
                                             "': Authoritative answer host not found.");
    }
}

TEST(InetAddress, SpecialAddresses) {
    InetAddress address(5, "10.0.0.1");
    address.setBroadcastAddress();
    EXPECT_EQ(address.getHostIP(), "255.255.255.255");
    address.setLocalHost();
    EXPECT_EQ(address.getHostIP(), "127.0.0.1");
    address.setReceiverAddress();
    EXPECT_EQ(address.getHostIP(), "0.0.0.0");
    address.initialise(9);
    EXPECT_EQ(address.getHostIP(), "0.0.0.0");
    EXPECT_EQ(address.getPort(), 9);
}

TEST(InetAddress, LocalAddressTable) {
    const std::vector<in_addr> table = InetAddress::getLocalAddressList();
    ASSERT_FALSE(table.empty());
    for (unsigned int i = 0; i < table.size(); ++i) {
        SCOPED_TRACE(i);
        InetAddress address(3, static_cast<int>(i));
        EXPECT_EQ(address.getHostIP(), InetAddress::ipAddrToString(table[i]));
        EXPECT_TRUE(address.isLocal());
    }
    InetAddress address(3);
    EXPECT_USAGE_ERROR(address.setLocalAdapter(table.size()), kModule, "num < _local_addr.size()");
    EXPECT_EQ(address.getHostIP(), "0.0.0.0");
    EXPECT_THROW(InetAddress(3, -1), std::invalid_argument);
}

TEST(InetAddress, IsLocal) {
    EXPECT_TRUE(InetAddress(1, "127.0.0.1").isLocal());
    // An address from a range reserved for documentation: local exactly when listed.
    InetAddress documentation(1, "198.51.100.7");
    const std::vector<in_addr> table = InetAddress::getLocalAddressList();
    bool listed = false;
    for (const in_addr& a : table) listed |= a.s_addr == inet_addr("198.51.100.7");
    EXPECT_EQ(documentation.isLocal(), listed);
}

TEST(InetAddress, EqualityComparesAddressAndPort) {
    EXPECT_EQ(InetAddress(80, "10.0.0.1"), InetAddress(80, "10.0.0.1"));
    EXPECT_NE(InetAddress(80, "10.0.0.1"), InetAddress(81, "10.0.0.1"));
    EXPECT_NE(InetAddress(80, "10.0.0.1"), InetAddress(80, "10.0.0.2"));
    EXPECT_EQ(InetAddress(80, "localhost"), InetAddress(80, "127.0.0.1"));
    sockaddr_in raw =
        *reinterpret_cast<const sockaddr_in*>(InetAddress(80, "10.0.0.1").getSockAddr());
    EXPECT_EQ(InetAddress(raw), InetAddress(80, "10.0.0.1"));
}

TEST(InetAddress, HostNameCacheFollowsTheAddress) {
    InetAddress address(80, "localhost");
    InetAddress copy = address;
    EXPECT_EQ(copy.getHostName(false), "localhost");
    address.resetHostName();
    EXPECT_EQ(address.getHostName(false), "127.0.0.1");
    // A writer through getSockAddr (recvfrom) changes the address under the cache.
    reinterpret_cast<sockaddr_in*>(copy.getSockAddr())->sin_addr.s_addr = inet_addr("10.9.8.7");
    EXPECT_EQ(copy.getHostName(false), "10.9.8.7");
}

TEST(InetAddress, ReverseLookupOfLoopbackIsCached) {
    const InetAddress address(80, "127.0.0.1");
    const std::string name = address.getHostName(true);
    EXPECT_FALSE(name.empty());
    EXPECT_EQ(address.getHostName(false), name);
}

TEST(InetAddress, TextFormsHoldAddressAndPort) {
    EXPECT_EQ(InetAddress(8000, "10.0.0.1").toString(), "10.0.0.1:8000");
    EXPECT_EQ(InetAddress(8000, "localhost").toString(), "localhost (127.0.0.1):8000");
    std::ostringstream os;
    os << InetAddress(21, "10.0.0.1");
    EXPECT_EQ(os.str(), "10.0.0.1:21");
}

}  // namespace
