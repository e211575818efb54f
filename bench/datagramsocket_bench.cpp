// UDP datagrams per second through DatagramSocket (sendDatagram to an address, then
// receiveDatagram with a wait) against plain sendto/recvfrom of the same datagrams over the
// same loopback sockets, for a small and an Ethernet-sized datagram. Prints the
// DatagramSocket rate as a fraction of the plain one for each size at the end.

#include <sys/socket.h>

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <eod/io/datagramsocket.h>

using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;

const int kPatientMs = 5000;

void finish(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_DatagramSocket(benchmark::State& state) {
    const DatagramSocket sender, receiver;
    const InetAddress to(receiver.getLocalAddress().getPort(), "127.0.0.1");
    const Bytes datagram(static_cast<std::size_t>(state.range(0)), 0x5A);
    Bytes out;
    InetAddress from;
    for (auto _ : state) {
        sender.sendDatagram(datagram, to);
        if (receiver.receiveDatagram(out, from, kPatientMs, false) != state.range(0)) {
            state.SkipWithError("datagram lost");
            break;
        }
    }
    finish(state);
}
BENCHMARK(BM_DatagramSocket)->Arg(64)->Arg(1400)->UseRealTime();

// The baseline: the same two sockets, bare blocking sendto and recvfrom.
void BM_SendtoRecvfrom(benchmark::State& state) {
    const DatagramSocket sender, receiver;
    const InetAddress to(receiver.getLocalAddress().getPort(), "127.0.0.1");
    const Bytes datagram(static_cast<std::size_t>(state.range(0)), 0x5A);
    Bytes buffer(65535);
    for (auto _ : state) {
        ::sendto(sender.getSocket(), datagram.data(), datagram.size(), 0, to.getSockAddr(),
                 sizeof(sockaddr_in));
        sockaddr_in peer{};
        socklen_t length = sizeof peer;
        if (::recvfrom(receiver.getSocket(), buffer.data(), buffer.size(), 0,
                       reinterpret_cast<sockaddr*>(&peer), &length) != state.range(0)) {
            state.SkipWithError("datagram lost");
            break;
        }
    }
    finish(state);
}
BENCHMARK(BM_SendtoRecvfrom)->Arg(64)->Arg(1400)->UseRealTime();

// The console report, followed by DatagramSocket's rate as a fraction of the baseline's.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto rate = run.counters.find("items_per_second");
            if (!run.error_occurred && rate != run.counters.end()) {
                _rates[run.benchmark_name()] = rate->second.value;
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const char* size : {"64", "1400"}) {
            const double wrapped = rateOf("BM_DatagramSocket/", size);
            const double plain = rateOf("BM_SendtoRecvfrom/", size);
            if (wrapped > 0 && plain > 0) {
                GetOutputStream() << "DatagramSocket / sendto+recvfrom, " << size
                                  << " bytes = " << wrapped / plain << "\n";
            }
        }
    }

private:
    double rateOf(const std::string& name, const std::string& size) const {
        for (const auto& entry : _rates) {
            if (entry.first.compare(0, name.size() + size.size(), name + size) == 0) {
                return entry.second;
            }
        }
        return 0;
    }

    std::map<std::string, double> _rates;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
