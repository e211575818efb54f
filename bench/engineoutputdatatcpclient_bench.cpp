// Frames per second that EngineOutputDataTcpClient takes from a loopback sender writing
// ~1.5 KB frames as fast as it can, against a plain recv loop over the same bytes from the
// same sender, and against decoding the same frame from memory. Prints the client's rate
// as a fraction of each at the end.

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <eod/eod.h>

#include "benchratios.h"
#include "testing/syntheticframe.h"

using namespace tq::eod;
using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;

const int kPatientMs = 5000;
const int kFramesPerWrite = 64;

// A typical frame of the synthetic engine (1549 bytes).
Bytes encodeFrame() {
    Bytes bytes;
    eodtesting::syntheticFrame(12345)->serialize(bytes);
    return bytes;
}

const Bytes& frameBytes() {
    static const Bytes frame = encodeFrame();
    return frame;
}

// Listens on loopback; the first caller gets frames written back to back until it hangs up.
class Sender {
public:
    Sender() : _thread([this] { run(); }) {}
    ~Sender() { _thread.join(); }

    const InetAddress& address() const { return _listener->getLocalAddress(); }

private:
    static std::unique_ptr<TcpSocket> listen() {
        std::unique_ptr<TcpSocket> listener(new TcpSocket());
        listener->open();
        listener->bind(InetAddress(0, "127.0.0.1"));
        listener->listen();
        return listener;
    }

    void run() {
        Bytes batch;
        for (int i = 0; i < kFramesPerWrite; ++i) {
            batch.insert(batch.end(), frameBytes().begin(), frameBytes().end());
        }
        const std::unique_ptr<TcpSocket> peer(_listener->accept(kPatientMs));
        if (!peer) return;
        try {
            for (;;) peer->send(batch);
        } catch (const SocketError&) {
            // The receiver hung up: the run is over.
        }
    }

    std::unique_ptr<TcpSocket> _listener = listen();
    std::thread _thread;
};

void BM_EngineOutputDataTcpClient(benchmark::State& state) {
    Sender sender;
    EngineOutputDataTcpClient client;
    client.connect(sender.address());
    for (auto _ : state) {
        const boost::shared_ptr<EngineOutputData> frame = client.receive(kPatientMs);
        if (!frame) {
            state.SkipWithError("no frame");
            break;
        }
        benchmark::DoNotOptimize(frame.get());
    }
    client.disconnect();
    benchratios::countItems(state, static_cast<int64_t>(frameBytes().size()));
}
BENCHMARK(BM_EngineOutputDataTcpClient)->UseRealTime();

// The baseline: recv into one buffer, counting a frame whenever its bytes are in.
void BM_RecvLoop(benchmark::State& state) {
    Sender sender;
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0 || ::connect(fd, sender.address().getSockAddr(), sizeof(sockaddr_in)) != 0) {
        state.SkipWithError("cannot connect");
        if (fd >= 0) ::close(fd);
        return;
    }
    std::vector<char> buffer(128 * 1024);
    std::size_t buffered = 0;
    for (auto _ : state) {
        while (buffered < frameBytes().size()) {
            const ssize_t n = ::recv(fd, buffer.data(), buffer.size(), 0);
            if (n <= 0) break;
            buffered += static_cast<std::size_t>(n);
        }
        if (buffered < frameBytes().size()) {
            state.SkipWithError("stream ended");
            break;
        }
        buffered -= frameBytes().size();
    }
    ::close(fd);
    benchratios::countItems(state, static_cast<int64_t>(frameBytes().size()));
}
BENCHMARK(BM_RecvLoop)->UseRealTime();

// What the client cannot be faster than: decoding the frame with the factory, no socket.
void BM_DecodeFromMemory(benchmark::State& state) {
    for (auto _ : state) {
        int read_pos = 0;
        const boost::shared_ptr<Serializable> frame =
            SerializableFactory::newObject(frameBytes(), read_pos);
        benchmark::DoNotOptimize(frame.get());
    }
    benchratios::countItems(state, static_cast<int64_t>(frameBytes().size()));
}
BENCHMARK(BM_DecodeFromMemory)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return benchratios::runWithRatios(
        argc, argv,
        {{"EngineOutputDataTcpClient / recv loop", "BM_EngineOutputDataTcpClient", "BM_RecvLoop"},
         {"EngineOutputDataTcpClient / decode from memory", "BM_EngineOutputDataTcpClient",
          "BM_DecodeFromMemory"}},
        "frame size " + std::to_string(frameBytes().size()) + " bytes\n");
}
