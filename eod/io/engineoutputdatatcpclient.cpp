#include <eod/io/engineoutputdatatcpclient.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include <boost/pointer_cast.hpp>

#include <eod/serializableerror.h>
#include <eod/recordsize.h>
#include <eod/serializablefactory.h>

#include "eod/detail/bytecodec.h"
#include "eod/detail/usageerror.h"

namespace tq {
namespace eod {
namespace io {

namespace {

// Buffer positions are ints; a record of at most this size leaves room for the bytes of one
// more read behind it.
const unsigned int kLargestMaxRecordSize = 1u << 30;

}  // namespace

EngineOutputDataTcpClient::EngineOutputDataTcpClient() : _server(0), _socket(INVALID_SOCKET) {}

void EngineOutputDataTcpClient::connect(const InetAddress& server) {
    clearBuffer();
    _bytes_received = 0;
    _skipped.clear();
    _socket.open();
    _socket.connect(server);
    _server = server;
}

bool EngineOutputDataTcpClient::isConnected() const { return connected(); }

void EngineOutputDataTcpClient::disconnect() {
    clearBuffer();
    _socket.close();
}

boost::shared_ptr<EngineOutputData> EngineOutputDataTcpClient::receive(int timeout_ms) {
    EOD_REQUIRE(connected(), "not connected");
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(std::max(timeout_ms, 0));
    bool has_read = false;
    for (;;) {
        checkRecordSize();
        if (!SerializableFactory::canDeserialize(_buffer, _read_pos)) {
            // What is left is less than one record: moving it to the front is cheap, and
            // happens once per read rather than once per record.
            _buffer.erase(_buffer.begin(), _buffer.begin() + _read_pos);
            _read_pos = 0;
            int wait_ms = timeout_ms;
            if (_whole_call_timeout) {
                const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    deadline - Clock::now());
                if (has_read && left.count() <= 0) return boost::shared_ptr<EngineOutputData>();
                wait_ms = static_cast<int>(std::max<long long>(0, left.count()));
            }
            const std::size_t before = _buffer.size();
            // Zero: the wait ran out or the peer closed. A record the peer cut short stays
            // buffered either way, for the caller to see.
            if (_socket.receive(_buffer, wait_ms, true) == 0) return boost::shared_ptr<EngineOutputData>();
            _bytes_received += _buffer.size() - before;
            has_read = true;
            continue;
        }
        // On a decoding error the position stays before the offending record.
        int read_pos = _read_pos;
        const int id = static_cast<signed char>(_buffer[static_cast<std::size_t>(_read_pos)]);
        const boost::shared_ptr<Serializable> record =
            SerializableFactory::newObject(_buffer, read_pos);
        _read_pos = read_pos;
        if (record && record->objectID() == EngineOutputData::THIS_OBJECT_ID) {
            boost::shared_ptr<EngineOutputData> frame =
                boost::dynamic_pointer_cast<EngineOutputData>(record);
            if (frame) return frame;
        }
        ++_skipped[id];
        // A peer that streams nothing but other records would otherwise keep the caller
        // here for as long as it sends.
        if (_whole_call_timeout && Clock::now() >= deadline) return boost::shared_ptr<EngineOutputData>();
    }
}

void EngineOutputDataTcpClient::setWholeCallTimeout(bool whole_call) { _whole_call_timeout = whole_call; }

void EngineOutputDataTcpClient::setMaxRecordSize(unsigned int max_record_size) {
    EOD_REQUIRE(max_record_size >= Serializable::minHeaderBytes() &&
                    max_record_size <= kLargestMaxRecordSize,
                "max_record_size out of range");
    _max_record_size = max_record_size;
}

void EngineOutputDataTcpClient::clearBuffer() {
    _buffer.clear();
    _read_pos = 0;
}

void EngineOutputDataTcpClient::checkRecordSize() {
    const RecordSize size = recordSizeFromPrefix(
        _buffer.data() + _read_pos, detail::bytesRemaining(_buffer, _read_pos));
    if (!size.known) return;
    const unsigned long long record_size = size.total_bytes;
    if (record_size <= _max_record_size) return;
    clearBuffer();
    throw SerializableError(
        "EngineOutputDataTcpClient::receive - record of " + std::to_string(record_size) +
        " bytes exceeds the maximum record size of " + std::to_string(_max_record_size) + " bytes");
}

}  // namespace io
}  // namespace eod
}  // namespace tq
