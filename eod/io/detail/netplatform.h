#ifndef EOD_IO_DETAIL_NETPLATFORM_H
#define EOD_IO_DETAIL_NETPLATFORM_H

// What the socket classes need beyond the BSD calls that every socket library shares:
// library start-up, the platform's error numbers, signal-free sends, close-on-exec handles
// and waiting on one handle. netplatform.cpp implements it for POSIX systems; a Winsock
// build would supply its own implementation of these few functions and nothing else.
//
// Handles are the unsigned socket handles of the public classes. Every failing function
// leaves its cause as the calling thread's last error, for netLibErrorString.

#include <cstddef>
#include <string>

#include <netinet/in.h>

namespace tq {
namespace eod {
namespace io {
namespace detail {

// False when the socket library cannot be started; nothing to do on POSIX systems.
bool startSocketLibrary();
void stopSocketLibrary();

// A new socket of the given type and protocol (AF_INET), not inherited by child programs.
bool openSocket(int type, int protocol, unsigned int& handle);
// Connects a blocking socket to an AF_INET address. A signal that interrupts the call does
// not end the attempt, which is then waited for to its end.
bool connectSocket(unsigned int handle, const sockaddr* address);
// The next pending connection of a listening socket; its peer goes to `peer`.
bool acceptSocket(unsigned int listener, sockaddr_in& peer, unsigned int& handle);
// Closes the handle and keeps the last error as the failed call before it left it.
void closeSocket(unsigned int handle);

// One send; a peer that went away is a failure, never a signal. With `no_wait` it takes
// only what fits into the send buffer now (0 when nothing fits). -1 on failure.
long sendOnSocket(unsigned int handle, const void* data, std::size_t size, bool no_wait);
// One receive of at most `size` bytes: the count, 0 when the peer closed, -1 on failure.
long receiveOnSocket(unsigned int handle, void* data, std::size_t size);

// Waits until the handle is readable (or writable): 1 ready, 0 the wait ended, -1 failure.
// A timeout of 0 polls; a negative one waits without limit. Errors and a closed connection
// count as ready, so the next call reports them.
int waitForSocket(unsigned int handle, bool for_writing, int timeout_ms);

// The description of the calling thread's last socket or host-lookup error, which is then
// cleared. A socket error made after a host-lookup error takes its place.
std::string takeLastNetErrorDescription();
// getaddrinfo and getnameinfo report through their result code rather than the last error:
// record that code as the thread's last error.
void recordResolverError(int code);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
