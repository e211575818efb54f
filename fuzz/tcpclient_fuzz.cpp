// EngineOutputDataTcpClient::receive over a loopback connection whose sender writes the
// fuzzed bytes. The sender writes the stream in chunks whose sizes cycle through 1 to 1024
// bytes, starting where the first byte says, so records cross every kind of read boundary;
// the rest of the input is the stream. However the
// stream is cut, the client must hand out the frames that the record factory finds in the
// same bytes, in order, and stop where the factory stops.

#include <eod/engineoutputdata.h>
#include <eod/io/engineoutputdatatcpclient.h>
#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>

#include <algorithm>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "fuzz/fuzzing.h"

using namespace tq::eod;
using namespace tq::eod::io;
using eodfuzz::Bytes;

namespace {

const unsigned int kChunkSizes[] = {1, 2, 3, 5, 7, 13, 32, 1024};
// Long enough for anything on loopback; only the final reads, after the sender has closed,
// wait at all, and they end as soon as the close arrives.
const int kPatientMs = 5000;

TcpSocket& listener() {
    static const std::unique_ptr<TcpSocket> socket = [] {
        std::unique_ptr<TcpSocket> s(new TcpSocket());
        s->open();
        s->bind(InetAddress(0, "127.0.0.1"));
        s->listen();
        return s;
    }();
    return *socket;
}

// The frames the factory reads from the stream, up to its first error or incomplete record.
std::vector<Bytes> framesInStream(const Bytes& stream) {
    std::vector<Bytes> frames;
    int pos = 0;
    while (SerializableFactory::canDeserialize(stream, pos)) {
        boost::shared_ptr<Serializable> record;
        if (!eodfuzz::allowingLibraryErrors(
                [&] { record = SerializableFactory::newObject(stream, pos); })) {
            break;
        }
        if (record && record->objectID() == EngineOutputData::THIS_OBJECT_ID) {
            frames.push_back(eodfuzz::fingerprint(*record));
        }
    }
    return frames;
}

// Takes every frame the client can give within timeout_ms per read; false once receive
// has thrown, after which the stream cannot be trusted and the client is disconnected.
bool drain(EngineOutputDataTcpClient& client, int timeout_ms, std::vector<Bytes>& frames) {
    for (;;) {
        boost::shared_ptr<EngineOutputData> frame;
        if (!eodfuzz::allowingLibraryErrors([&] { frame = client.receive(timeout_ms); })) {
            client.disconnect();
            return false;
        }
        if (!frame) return true;
        eodfuzz::checkUsable(*frame, true);
        frames.push_back(eodfuzz::fingerprint(*frame));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Bytes stream(data + 1, data + size);

    EngineOutputDataTcpClient client;
    client.connect(listener().getLocalAddress());
    std::unique_ptr<TcpSocket> sender(listener().accept(kPatientMs));
    EOD_FUZZ_EXPECT(sender);
    sender->enableNagleAlgortihm(false);

    std::vector<Bytes> frames;
    bool usable = true;
    const std::size_t num_sizes = sizeof kChunkSizes / sizeof *kChunkSizes;
    for (std::size_t sent = 0, i = data[0]; usable && sent < stream.size(); ++i) {
        const std::size_t n =
            std::min<std::size_t>(kChunkSizes[i % num_sizes], stream.size() - sent);
        sender->send(stream.data() + sent, static_cast<unsigned int>(n));
        sent += n;
        usable = drain(client, 0, frames);
    }
    sender->close();
    if (usable) {
        drain(client, kPatientMs, frames);
        // The close ended the last read; the client stays connected and says the peer closed.
        EOD_FUZZ_EXPECT(client.peerClosed() && client.isConnected());
    }

    EOD_FUZZ_EXPECT(frames == framesInStream(stream));
    return 0;
}
