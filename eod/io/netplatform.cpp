// The POSIX implementation of the socket platform layer.

#include "eod/io/detail/netplatform.h"

#include <cerrno>
#include <chrono>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tq {
namespace eod {
namespace io {
namespace detail {

namespace {

// The last host-lookup error of each thread; errno holds every other error.
thread_local int last_resolver_error = 0;

const char* const kNoDescription = "No error message is defined for this exception.";

// The descriptions are worded after the call that most often raises each code.
const char* socketErrorDescription(int code) {
    switch (code) {
        case EINTR:
            return "The (blocking) call was canceled via WSACancelBlockingCall()";
        case EBADF:
            return "For Windows CE AF_IRDA sockets only: the shared serial port is busy.";
        case EFAULT:
            return "The namelen argument is incorrect.";
        case EINVAL:
            return "The socket is not already bound to an address.";
        case EMFILE:
            return "No more socket descriptors are available.";
        case EWOULDBLOCK:
            return "The socket is marked as non-blocking and the connection cannot be completed "
                   "manually.";
#if EAGAIN != EWOULDBLOCK
        case EAGAIN:
            return "The socket is marked as non-blocking and the connection cannot be completed "
                   "manually.";
#endif
        case EINPROGRESS:
            return "A blocking Windows Sockets 1.1 call is in progress, or the service provider "
                   "is still processing a callback function.";
        case ENOTSOCK:
            return "The descriptor is not a socket.";
        case EMSGSIZE:
            return "The message was too large to fit in the buffer provided and was truncated";
        case EPROTOTYPE:
            return "The specified protocol is the wrong type for this socket.";
        case EPROTONOSUPPORT:
            return "The specified protocol is not supported.";
        case ESOCKTNOSUPPORT:
            return "The specified socket type is not supported in this address family.";
        case EAFNOSUPPORT:
            return "The specified address family is not supported.";
        case EADDRINUSE:
            return "The specified address is already in use.";
        case EADDRNOTAVAIL:
            return "The specified address is not available from the local machine.";
        case ENETDOWN:
            return "The network subsystem or the associated service provider has failed.";
        case ENETUNREACH:
            return "The network can't be reached from this host at this time.";
        // Sending to a peer that has gone is EPIPE here; other socket libraries report it as
        // a reset connection, and so do we.
        case EPIPE:
        case ECONNRESET:
            return "The connection was forcibly closed by the remote host.";
        case ENOBUFS:
            return "No buffer space is available. The socket cannot be created.";
        case EISCONN:
            return "The socket is already connected.";
        case ETIMEDOUT:
            return "Attempt to connect timed out without establishing a connection";
        case ECONNREFUSED:
            return "The attempt to connect was forcefully rejected.";
        case EHOSTUNREACH:
            return "The host was unreachable.";
        default:
            return kNoDescription;
    }
}

const char* resolverErrorDescription(int code) {
    switch (code) {
        case EAI_NONAME:
            return "Authoritative answer host not found.";
        case EAI_AGAIN:
            return "Nonauthoritative host not found, or server failed.";
        case EAI_FAIL:
            return "A nonrecoverable error occurred.";
#ifdef EAI_NODATA
        case EAI_NODATA:
#endif
#ifdef EAI_ADDRFAMILY
        case EAI_ADDRFAMILY:
#endif
            return "Valid name, no data record of requested type.";
        default:
            return kNoDescription;
    }
}

}  // namespace

bool startSocketLibrary() { return true; }

void stopSocketLibrary() {}

bool openSocket(int type, int protocol, unsigned int& handle) {
    const int fd = ::socket(AF_INET, type | SOCK_CLOEXEC, protocol);
    if (fd < 0) return false;
    handle = static_cast<unsigned int>(fd);
    return true;
}

bool connectSocket(unsigned int handle, const sockaddr* address) {
    const int fd = static_cast<int>(handle);
    if (::connect(fd, address, sizeof(sockaddr_in)) == 0) return true;
    if (errno != EINTR) return false;
    // The connection goes on without the call (a second connect would only fail with
    // EALREADY): wait until it is made or has failed, and take its outcome.
    if (waitForSocket(handle, true, -1) < 0) return false;
    int error = 0;
    socklen_t length = sizeof error;
    if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0) return false;
    errno = error;
    return error == 0;
}

bool acceptSocket(unsigned int listener, sockaddr_in& peer, unsigned int& handle) {
    int fd;
    do {
        socklen_t length = sizeof peer;
        fd = ::accept4(static_cast<int>(listener), reinterpret_cast<sockaddr*>(&peer), &length,
                       SOCK_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return false;
    handle = static_cast<unsigned int>(fd);
    return true;
}

void closeSocket(unsigned int handle) {
    const int saved = errno;
    ::close(static_cast<int>(handle));
    errno = saved;
}

long sendOnSocket(unsigned int handle, const void* data, std::size_t size, bool no_wait) {
    const int flags = MSG_NOSIGNAL | (no_wait ? MSG_DONTWAIT : 0);
    ssize_t sent;
    do {
        sent = ::send(static_cast<int>(handle), data, size, flags);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0 && no_wait && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        errno = 0;
        return 0;
    }
    return static_cast<long>(sent);
}

long receiveOnSocket(unsigned int handle, void* data, std::size_t size) {
    ssize_t received;
    do {
        received = ::recv(static_cast<int>(handle), data, size, 0);
    } while (received < 0 && errno == EINTR);
    return static_cast<long>(received);
}

int waitForSocket(unsigned int handle, bool for_writing, int timeout_ms) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    pollfd entry{static_cast<int>(handle), static_cast<short>(for_writing ? POLLOUT : POLLIN), 0};
    int wait_ms = timeout_ms;
    for (;;) {
        const int ready = ::poll(&entry, 1, wait_ms);
        if (ready >= 0) {
            if (ready > 0 && (entry.revents & POLLNVAL)) {
                errno = EBADF;
                return -1;
            }
            return ready > 0 ? 1 : 0;
        }
        if (errno != EINTR) return -1;
        // A signal cut the wait short: wait again for the time that is left.
        if (timeout_ms > 0) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            wait_ms = left.count() > 0 ? static_cast<int>(left.count()) : 0;
        }
    }
}

std::string takeLastNetErrorDescription() {
    const int socket_error = errno;
    const int resolver_error = last_resolver_error;
    errno = 0;
    last_resolver_error = 0;
    if (socket_error != 0) return socketErrorDescription(socket_error);
    return resolverErrorDescription(resolver_error);
}

void recordResolverError(int code) {
    // EAI_SYSTEM means the cause is in errno already. Otherwise clear errno, which the
    // lookup may have left set from files it tried, so that the lookup's code is the
    // last error.
    if (code == EAI_SYSTEM) {
        last_resolver_error = 0;
        return;
    }
    last_resolver_error = code;
    errno = 0;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
