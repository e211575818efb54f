#ifndef EOD_IO_ENGINEOUTPUTDATATCPCLIENT_H
#define EOD_IO_ENGINEOUTPUTDATATCPCLIENT_H

// Receives the frames an engine streams over TCP. The stream carries whole encoded records
// back to back with no other framing: a record's own header says where it ends. Frames
// (EngineOutputData, object id 9) are handed to the caller; other records are decoded and
// dropped. Bytes received but not yet decoded stay buffered between calls, also when the
// peer closes, and are dropped on connect and disconnect so that connections never mix.
//
// A header may announce a record of up to 4 GiB. A record larger than maxRecordSize()
// (64 MiB unless set) is refused as soon as its header has arrived, before anything is
// allocated for it: receive throws SerializableError and empties the buffer. Since the
// stream has no other framing, the bytes that follow cannot be trusted to start a record;
// disconnect after this error.

#include <cstddef>
#include <cstdint>
#include <map>
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
    // connection; the client stays connected and keeps the bytes of a record the peer
    // cut short (peerClosed() and bufferedBytes() tell). Each read waits up to timeout_ms,
    // so a frame that arrives in pieces may take several times that, and a peer that
    // sends records of other ids without pause keeps the call going; see
    // setWholeCallTimeout. Usage error "not connected". Socket failures throw
    // SocketError; a record that does not decode throws the SerializableError of
    // SerializableFactory::newObject and stays at the front of the buffer; an oversized
    // record throws SerializableError "EngineOutputDataTcpClient::receive - record of <n>
    // bytes exceeds the maximum record size of <max> bytes".
    boost::shared_ptr<EngineOutputData> receive(int timeout_ms);

    // When true, a call to receive returns within about timeout_ms whatever arrives: null
    // once the time is up and no whole frame arrived, with every byte received kept for
    // the next call. A caller that must stop on time (a signal, a time limit) sets this.
    // False by default: each read waits timeout_ms on its own.
    void setWholeCallTimeout(bool whole_call);
    bool wholeCallTimeout() const { return _whole_call_timeout; }

    // Whether a receive found the connection closed by the peer; nothing more will arrive.
    bool peerClosed() const { return _socket.peerClosed(); }
    // Bytes received and not yet decoded: after the peer closed, the part of a record it
    // cut short.
    std::size_t bufferedBytes() const { return _buffer.size() - static_cast<std::size_t>(_read_pos); }
    // What arrived since connect: every byte read from the socket, and the top-level
    // records that were not frames (decoded and dropped, or of an unknown id and skipped)
    // by object id.
    std::uint64_t bytesReceived() const { return _bytes_received; }
    const std::map<int, std::uint64_t>& skippedRecords() const { return _skipped; }

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
    bool _whole_call_timeout = false;
    std::uint64_t _bytes_received = 0;
    std::map<int, std::uint64_t> _skipped;
};

}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
