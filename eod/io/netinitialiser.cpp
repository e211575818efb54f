#include <eod/io/netinitialiser.h>

#include <eod/io/socketerror.h>

#include "eod/io/detail/netplatform.h"

namespace tq {
namespace eod {
namespace io {

void NetInitialiser::init() const {
    if (!detail::startSocketLibrary()) {
        throw SocketError(netLibErrorString("Could not find a useable windows sockets dll."));
    }
}

void NetInitialiser::cleanup() const { detail::stopSocketLibrary(); }

}  // namespace io
}  // namespace eod
}  // namespace tq
