#ifndef EOD_IO_INETADDRESS_H
#define EOD_IO_INETADDRESS_H

// One IPv4 end point: an address and a port, kept in network byte order as the socket calls
// want them, plus the host name once it is known. Copyable; equal when address and port are.
//
// The machine's own IPv4 addresses form a table that is read once, on first use (isLocal,
// setLocalAdapter, getLocalAddressList, and setHost for names that need a lookup), and is
// never refreshed.

#include <ostream>
#include <string>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>

namespace tq {
namespace eod {
namespace io {

class InetAddress {
public:
    // The wildcard receiver address (INADDR_ANY) with the given port.
    explicit InetAddress(int port = 0);
    // The address `host` names, through setHost. A name that does not resolve leaves the
    // wildcard address (INADDR_ANY) without an exception; resolve() is the checked form.
    InetAddress(int port, const std::string& host);
    // As the constructor above, but throws InetAddressException "Could not resolve host
    // '<host>': <description>" for a name that resolves to nothing, rather than handing
    // back a wildcard address that would quietly reach this machine.
    static InetAddress resolve(int port, const std::string& host);
    // Entry `adapter` of the local address table; see setLocalAdapter.
    InetAddress(int port, int adapter);
    explicit InetAddress(const sockaddr_in& address);

    // Family AF_INET, address 0.0.0.0, and the port. Forgets the host name.
    void initialise(int port);
    // Ports are 0 to 65535 (usage error "port out of range"); 0 lets bind choose one.
    void setPort(int port);
    int getPort() const;

    // "localhost" becomes 127.0.0.1 without a lookup; a dotted address is taken as it
    // stands; any other text is looked up as a host name, and an address of this machine's
    // own becomes 127.0.0.1. Returns false, with the address unchanged and the cause kept
    // for netLibErrorString, when the name does not resolve. A looked-up name reads the
    // local address table, with its InetAddressException.
    bool setHost(const std::string& host);
    void setReceiverAddress();
    void setBroadcastAddress();
    void setLocalHost();
    // Entry `num` of the local address table; num must be below the table's size
    // (usage error "num < _local_addr.size()").
    void setLocalAdapter(unsigned int num);
    // The local address table. Throws InetAddressException when the system cannot list
    // its addresses.
    static std::vector<in_addr> getLocalAddressList();

    // Dotted decimal form, as "192.168.0.1".
    std::string getHostIP() const;
    static std::string ipAddrToString(const in_addr& address);

    // The host name: the name this address was set from or last looked up, kept while the
    // address stays the same. Without a known name, `lookup` true asks the resolver (and
    // keeps the answer) while false does not; either way the dotted form stands in for a
    // name that is not known.
    std::string getHostName(bool lookup = true) const;
    // Forgets the host name, so the next getHostName(true) looks it up again.
    void resetHostName() const;

    // The address for socket calls, writable so that calls such as recvfrom can fill it.
    sockaddr* getSockAddr() const;
    // True for 127.0.0.1 and for every address in the local address table.
    bool isLocal() const;
    // "127.0.0.1:8000", or "localhost (127.0.0.1):8000" when the host name is known. Never
    // looks a name up.
    std::string toString() const;

    bool operator==(const InetAddress& other) const;
    bool operator!=(const InetAddress& other) const { return !(*this == other); }

private:
    static const std::vector<in_addr>& localAddressTable();
    static std::vector<in_addr> buildLocalAddressTable();
    bool hostNameKnown() const;
    void keepHostName(const std::string& name) const;

    // Mutable because getSockAddr() hands out a writable pointer from a const address, and
    // the host name is filled in by the const getHostName().
    mutable sockaddr_in _address;
    mutable std::string _host_name;
    // The address _host_name belongs to, so a name never outlives a change of address.
    mutable in_addr _host_name_address{};
    mutable bool _host_name_valid = false;
};

std::ostream& operator<<(std::ostream& os, const InetAddress& address);

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
