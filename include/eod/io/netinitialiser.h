#ifndef EOD_IO_NETINITIALISER_H
#define EOD_IO_NETINITIALISER_H

namespace tq {
namespace eod {
namespace io {

// Starts and stops the platform's socket library. Call init() before the first address or
// socket call and cleanup() after the last. Where the socket library needs no start (POSIX
// systems) both do nothing and may be called any number of times.
class NetInitialiser {
public:
    // Throws SocketError "Could not find a useable windows sockets dll.: <description>"
    // when the library cannot be started; nothing is left started then.
    void init() const;
    void cleanup() const;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
