#include <eod/io/inetaddress.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netdb.h>

#include <eod/io/inetaddressexception.h>
#include <eod/io/socketerror.h>

#include "eod/io/detail/netplatform.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

const in_addr kLocalHost = {htonl(INADDR_LOOPBACK)};

bool sameAddress(const in_addr& a, const in_addr& b) { return a.s_addr == b.s_addr; }

}  // namespace

InetAddress::InetAddress(int port) { initialise(port); }

InetAddress::InetAddress(int port, const std::string& host) {
    initialise(port);
    setHost(host);
}

InetAddress InetAddress::resolve(int port, const std::string& host) {
    InetAddress address(port);
    if (!address.setHost(host)) {
        throw InetAddressException(netLibErrorString("Could not resolve host '" + host + "'"));
    }
    return address;
}

InetAddress::InetAddress(int port, int adapter) {
    initialise(port);
    setLocalAdapter(static_cast<unsigned int>(adapter));
}

InetAddress::InetAddress(const sockaddr_in& address) : _address(address) {}

void InetAddress::initialise(int port) {
    std::memset(&_address, 0, sizeof _address);
    _address.sin_family = AF_INET;
    _host_name_valid = false;
    setPort(port);
}

void InetAddress::setPort(int port) {
    EOD_REQUIRE(port >= 0 && port <= 65535, "port out of range");
    _address.sin_port = htons(static_cast<std::uint16_t>(port));
}

int InetAddress::getPort() const { return ntohs(_address.sin_port); }

bool InetAddress::setHost(const std::string& host) {
    if (host == "localhost") {
        setLocalHost();
        keepHostName(host);
        return true;
    }
    in_addr parsed;
    if (inet_pton(AF_INET, host.c_str(), &parsed) == 1) {
        _address.sin_addr = parsed;
        return true;
    }
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int rc = getaddrinfo(host.c_str(), nullptr, &hints, &found);
    if (rc != 0) {
        detail::recordResolverError(rc);
        return false;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> answer(found, &freeaddrinfo);
    in_addr resolved = reinterpret_cast<const sockaddr_in*>(answer->ai_addr)->sin_addr;
    // Our own name may resolve to an outward-facing address; reach ourselves over loopback.
    const std::vector<in_addr>& own = localAddressTable();
    if (std::any_of(own.begin(), own.end(),
                    [&](const in_addr& a) { return sameAddress(a, resolved); })) {
        resolved = kLocalHost;
    }
    _address.sin_addr = resolved;
    keepHostName(host);
    return true;
}

void InetAddress::setReceiverAddress() { _address.sin_addr.s_addr = htonl(INADDR_ANY); }

void InetAddress::setBroadcastAddress() { _address.sin_addr.s_addr = htonl(INADDR_BROADCAST); }

void InetAddress::setLocalHost() { _address.sin_addr = kLocalHost; }

void InetAddress::setLocalAdapter(unsigned int num) {
    const std::vector<in_addr>& table = localAddressTable();
    EOD_REQUIRE(num < table.size(), "num < _local_addr.size()");
    _address.sin_addr = table[num];
}

std::vector<in_addr> InetAddress::getLocalAddressList() { return localAddressTable(); }

std::string InetAddress::getHostIP() const { return ipAddrToString(_address.sin_addr); }

std::string InetAddress::ipAddrToString(const in_addr& address) {
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof text);
}

std::string InetAddress::getHostName(bool lookup) const {
    if (hostNameKnown()) return _host_name;
    if (!lookup) return getHostIP();
    char name[NI_MAXHOST];
    const int rc = getnameinfo(reinterpret_cast<const sockaddr*>(&_address), sizeof _address, name,
                               sizeof name, nullptr, 0, NI_NAMEREQD);
    if (rc != 0) {
        detail::recordResolverError(rc);
        return getHostIP();
    }
    keepHostName(name);
    return _host_name;
}

void InetAddress::resetHostName() const { _host_name_valid = false; }

sockaddr* InetAddress::getSockAddr() const { return reinterpret_cast<sockaddr*>(&_address); }

bool InetAddress::isLocal() const {
    if (sameAddress(_address.sin_addr, kLocalHost)) return true;
    const std::vector<in_addr>& own = localAddressTable();
    return std::any_of(own.begin(), own.end(),
                       [&](const in_addr& a) { return sameAddress(a, _address.sin_addr); });
}

std::string InetAddress::toString() const {
    const std::string ip = getHostIP();
    const std::string port = std::to_string(getPort());
    return hostNameKnown() ? _host_name + " (" + ip + "):" + port : ip + ":" + port;
}

bool InetAddress::operator==(const InetAddress& other) const {
    return sameAddress(_address.sin_addr, other._address.sin_addr) &&
           _address.sin_port == other._address.sin_port;
}

const std::vector<in_addr>& InetAddress::localAddressTable() {
    static const std::vector<in_addr> table = buildLocalAddressTable();
    return table;
}

// Every IPv4 address of every interface, loopback included. The interface list is used
// rather than the addresses the host name resolves to, because on many systems the host
// name resolves to a loopback alias and not to the addresses others reach us by.
std::vector<in_addr> InetAddress::buildLocalAddressTable() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        throw InetAddressException(netLibErrorString("Could not list the local network addresses"));
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
    std::vector<in_addr> table;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET) {
            table.push_back(reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)->sin_addr);
        }
    }
    return table;
}

bool InetAddress::hostNameKnown() const {
    return _host_name_valid && sameAddress(_host_name_address, _address.sin_addr);
}

void InetAddress::keepHostName(const std::string& name) const {
    _host_name = name;
    _host_name_address = _address.sin_addr;
    _host_name_valid = true;
}

std::ostream& operator<<(std::ostream& os, const InetAddress& address) {
    return os << address.toString();
}

}  // namespace io
}  // namespace eod
}  // namespace tq
