#include <cerrno>
#include <string>

#include <netdb.h>

#include <gtest/gtest.h>

#include <eod/eod.h>

#include "eod/io/detail/netplatform.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

const char* const kNoDescription = "No error message is defined for this exception.";

struct Described {
    int code;
    const char* description;
};

TEST(NetLibErrorString, DescribesTheSocketErrorsOfThisPlatform) {
    const Described table[] = {
        {EINTR, "The (blocking) call was canceled via WSACancelBlockingCall()"},
        {EBADF, "For Windows CE AF_IRDA sockets only: the shared serial port is busy."},
        {EFAULT, "The namelen argument is incorrect."},
        {EINVAL, "The socket is not already bound to an address."},
        {EMFILE, "No more socket descriptors are available."},
        {EWOULDBLOCK,
         "The socket is marked as non-blocking and the connection cannot be completed manually."},
        {EAGAIN,
         "The socket is marked as non-blocking and the connection cannot be completed manually."},
        {EINPROGRESS,
         "A blocking Windows Sockets 1.1 call is in progress, or the service provider is still "
         "processing a callback function."},
        {ENOTSOCK, "The descriptor is not a socket."},
        {EMSGSIZE, "The message was too large to fit in the buffer provided and was truncated"},
        {EPROTOTYPE, "The specified protocol is the wrong type for this socket."},
        {EPROTONOSUPPORT, "The specified protocol is not supported."},
        {ESOCKTNOSUPPORT, "The specified socket type is not supported in this address family."},
        {EAFNOSUPPORT, "The specified address family is not supported."},
        {EADDRINUSE, "The specified address is already in use."},
        {EADDRNOTAVAIL, "The specified address is not available from the local machine."},
        {ENETDOWN, "The network subsystem or the associated service provider has failed."},
        {ENETUNREACH, "The network can't be reached from this host at this time."},
        {ECONNRESET, "The connection was forcibly closed by the remote host."},
        {EPIPE, "The connection was forcibly closed by the remote host."},
        {ENOBUFS, "No buffer space is available. The socket cannot be created."},
        {EISCONN, "The socket is already connected."},
        {ETIMEDOUT, "Attempt to connect timed out without establishing a connection"},
        {ECONNREFUSED, "The attempt to connect was forcefully rejected."},
        {EHOSTUNREACH, "The host was unreachable."},
        {ENOENT, kNoDescription},
        {0, kNoDescription},
    };
    for (const Described& d : table) {
        SCOPED_TRACE(d.code);
        errno = d.code;
        EXPECT_EQ(netLibErrorString("Failed to receive data."),
                  std::string("Failed to receive data.: ") + d.description);
        EXPECT_EQ(errno, 0);
    }
}

TEST(NetLibErrorString, DescribesHostLookupFailures) {
    const Described table[] = {
        {EAI_NONAME, "Authoritative answer host not found."},
        {EAI_AGAIN, "Nonauthoritative host not found, or server failed."},
        {EAI_FAIL, "A nonrecoverable error occurred."},
        {EAI_NODATA, "Valid name, no data record of requested type."},
        {EAI_ADDRFAMILY, "Valid name, no data record of requested type."},
        {EAI_MEMORY, kNoDescription},
    };
    for (const Described& d : table) {
        SCOPED_TRACE(d.code);
        errno = ENOENT;  // what a lookup leaves behind from the files it tried
        detail::recordResolverError(d.code);
        EXPECT_EQ(netLibErrorString("m"), std::string("m: ") + d.description);
        EXPECT_EQ(netLibErrorString("m"), std::string("m: ") + kNoDescription);
    }
}

TEST(NetLibErrorString, ALaterSocketErrorReplacesAHostLookupError) {
    detail::recordResolverError(EAI_NONAME);
    errno = ECONNREFUSED;
    EXPECT_EQ(netLibErrorString("m"), "m: The attempt to connect was forcefully rejected.");
    EXPECT_EQ(netLibErrorString("m"), std::string("m: ") + kNoDescription);
}

TEST(NetLibErrorString, ASystemLookupErrorIsTheErrorNumber) {
    errno = EMFILE;
    detail::recordResolverError(EAI_SYSTEM);
    EXPECT_EQ(netLibErrorString("m"), "m: No more socket descriptors are available.");
}

TEST(SocketErrors, CarryTheirMessageAndClassName) {
    const SocketError socket_error("abc");
    EXPECT_STREQ(socket_error.what(), "abc");
    EXPECT_STREQ(socket_error.className(), "SocketError");
    const InetAddressException address_error("def");
    EXPECT_STREQ(address_error.what(), "def");
    EXPECT_STREQ(address_error.className(), "InetAddressException");
    EXPECT_THROW(throw SocketError("x"), EODError);
    EXPECT_THROW(throw InetAddressException("x"), std::runtime_error);
}

TEST(NetInitialiser, StartAndStopAreHarmlessAndRepeatable) {
    const NetInitialiser net;
    EXPECT_NO_THROW(net.init());
    EXPECT_NO_THROW(net.init());
    EXPECT_NO_THROW(net.cleanup());
    EXPECT_NO_THROW(net.cleanup());
}

}  // namespace
