#ifndef EOD_IO_ENGINEOUTPUTDATATCPCLIENT_H
#define EOD_IO_ENGINEOUTPUTDATATCPCLIENT_H

// Receives the frames an engine streams over TCP. The stream carries whole encoded records
// back to back with no other framing: a record's own header says where it ends. Frames
// (EngineOutputData, object id 9) are handed to the caller; other records are decoded and
// dropped. Bytes received but not yet decoded stay buffered between calls, and are dropped
// on connect and disconnect so that connections never mix.
//
// A header may announce a record of up to 4 GiB. A record larger than maxRecordSize()
// (64 MiB unless set) is refused as soon as its header has arrived, before anything is
// allocated for it: receive throws SerializableError and empties the buffer. Since the
// stream has no other framing, the bytes that follow cannot be trusted to start a record;
// disconnect after this error.

#include <cstddef>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <eod/engineoutputdata.h>
#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>

namespace tq {
namespace eod {
namespace io {

class EngineOutputDataTcpClient {
public:
    static constexpr unsigned int DEFAULT_MAX_RECORD_SIZE = 64u << 20;

    EngineOutputDataTcpClient();

    // Opens and connects the socket; the errors of TcpSocket::open and connect propagate.
    void connect(const InetAddress& server);
    bool isConnected() const;
    void disconnect();

    // The next frame, or null when no whole frame arrived in time or the peer closed the
    // connection; in the second case the client disconnects itself (isConnected() turns
    // false). Each read waits up to timeout_ms, so a frame that arrives in pieces may
    // take several times that. Usage error "not connected". Socket failures throw
    // SocketError; a record that does not decode throws the SerializableError of
    // SerializableFactory::newObject and stays at the front of the buffer; an oversized
    // record throws SerializableError "EngineOutputDataTcpClient::receive - record of <n>
    // bytes exceeds the maximum record size of <max> bytes".
    boost::shared_ptr<EngineOutputData> receive(int timeout_ms);

    // Largest record, header included, that receive accepts: at least 3 bytes and at most
    // 1 GiB, so that buffer positions stay in range (usage error "max_record_size out of
    // range").
    void setMaxRecordSize(unsigned int max_record_size);
    unsigned int maxRecordSize() const { return _max_record_size; }

private:
    bool connected() const { return _socket.connected(); }
    void clearBuffer();
    // Refuses the record at the read position once its header shows it larger than the
    // maximum.
    void checkRecordSize();

    InetAddress _server;
    std::vector<unsigned char> _buffer;
    // Bytes at the front of _buffer that are decoded already. They are erased only before
    // the next read from the socket, so many small records from one read cost one erase.
    int _read_pos = 0;
    TcpSocket _socket;
    unsigned int _max_record_size = DEFAULT_MAX_RECORD_SIZE;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
