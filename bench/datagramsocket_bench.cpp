// UDP datagrams per second through DatagramSocket (sendDatagram to an address, then
// receiveDatagram with a wait) against plain sendto/recvfrom of the same datagrams over the
// same loopback sockets, for a small and an Ethernet-sized datagram. Prints the
// DatagramSocket rate as a fraction of the plain one for each size at the end.

#include <sys/socket.h>

#include <vector>

#include <benchmark/benchmark.h>

#include <eod/io/datagramsocket.h>

#include "benchratios.h"

using namespace tq::eod::io;

namespace {

using Bytes = std::vector<unsigned char>;

const int kPatientMs = 5000;

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
    benchratios::countItems(state, state.range(0));
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
    benchratios::countItems(state, state.range(0));
}
BENCHMARK(BM_SendtoRecvfrom)->Arg(64)->Arg(1400)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return benchratios::runWithRatios(argc, argv,
                                      {{"DatagramSocket / sendto+recvfrom, 64 bytes",
                                        "BM_DatagramSocket/64", "BM_SendtoRecvfrom/64"},
                                       {"DatagramSocket / sendto+recvfrom, 1400 bytes",
                                        "BM_DatagramSocket/1400", "BM_SendtoRecvfrom/1400"}});
}
