#include <eod/io/tcpclient.h>

namespace tq {
namespace eod {
namespace io {

TcpClient::TcpClient() { socket().open(); }

void TcpClient::open(const InetAddress& server) {
    // A failed connect or a close() leaves no handle; a new attempt starts with a new one.
    if (!socket().opened()) socket().open();
    socket().connect(server);
}

}  // namespace io
}  // namespace eod
}  // namespace tq
