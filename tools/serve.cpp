// `eod serve (PATH | --synthetic) --port P [--host ADDR] [--rate HZ] [--loop] [--frames N]
// [--ids LIST]`: act as an engine and stream frames over TCP, one encoded frame after another,
// to every client that connects.
// Streaming starts when the first client connects, so that client sees every frame;
// later clients join mid-stream. A client that cannot keep up for a second is dropped,
// since a frame cut short would spoil the rest of its stream.

#include <chrono>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

#include <eod/eoderror.h>
#include <eod/io/inetaddress.h>
#include <eod/io/tcpsocket.h>
#include <eod/timingoutputdata.h>

#include "commands.h"
#include "framesource.h"
#include "syntheticengine.h"
#include "toolerror.h"

namespace eodtool {

namespace {

using Clock = std::chrono::steady_clock;
using tq::eod::EngineOutputData;
using tq::eod::io::TcpSocket;

const int kSendTimeoutMs = 1000;
const double kDefaultRate = 60.0;

std::unique_ptr<FrameSource> openSource(const ServeOptions& options) {
    if (options.synthetic) return makeSyntheticSource(options.frames);
    return openRecording(options.path);
}

// Seconds between this frame and the one before: the fixed rate when one is given, else
// the recording's own experiment times, else 60 Hz.
class Pacer {
public:
    explicit Pacer(double rate) : _rate(rate), _next(Clock::now()) {}

    void waitFor(const EngineOutputData& frame) {
        double interval = 1.0 / (_rate > 0 ? _rate : kDefaultRate);
        if (_rate <= 0) {
            if (const auto timing = frame.typedSubObject<tq::eod::TimingOutputData>(
                    tq::eod::TimingOutputData::THIS_OBJECT_ID)) {
                const double t = timing->experimentTime();
                if (_has_time && t > _time && t - _time < 10.0) interval = t - _time;
                _time = t;
                _has_time = true;
            }
        }
        _next += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(interval));
        std::this_thread::sleep_until(_next);
    }

private:
    double _rate;
    Clock::time_point _next;
    bool _has_time = false;
    double _time = 0;
};

void acceptClients(TcpSocket& listener, std::vector<std::unique_ptr<TcpSocket>>& clients,
                   int timeout_ms) {
    while (TcpSocket* client = listener.accept(timeout_ms)) {
        std::cerr << "eod serve: client " << client->getRemoteAddress().getHostIP() << ':'
                  << client->getRemoteAddress().getPort() << " connected\n";
        clients.emplace_back(client);
        timeout_ms = 0;
    }
}

}  // namespace

int runServe(const ServeOptions& options) {
    std::unique_ptr<FrameSource> source = openSource(options);
    const std::vector<char> ids(options.ids.begin(), options.ids.end());

    TcpSocket listener;
    const std::string where = options.host + " port " + std::to_string(options.port);
    tq::eod::io::InetAddress address(options.port);
    if (!address.setHost(options.host)) throw ToolError(options.host + ": unknown host");
    try {
        listener.open();
        listener.setSocketFlag(TcpSocket::FLAG_REUSE_ADDRESS, true);
        listener.bind(address);
        listener.listen();
    } catch (const tq::eod::EODError& e) {
        throw ToolError(where + ": " + e.what());
    }
    std::cerr << "eod serve: listening on port " << listener.getLocalAddress().getPort() << " ("
              << options.host << ")\n";

    std::vector<std::unique_ptr<TcpSocket>> clients;
    while (clients.empty()) acceptClients(listener, clients, 1000);

    Pacer pacer(options.rate);
    std::vector<unsigned char> bytes;
    unsigned long long sent = 0;
    const FrameRange every_frame;
    while (options.frames == 0 || sent < options.frames) {
        boost::shared_ptr<EngineOutputData> frame = nextSelected(*source, every_frame, ids);
        if (!frame && options.loop && !options.synthetic) {
            source = openSource(options);
            frame = nextSelected(*source, every_frame, ids);
        }
        if (!frame) break;
        pacer.waitFor(*frame);
        acceptClients(listener, clients, 0);
        bytes.clear();
        frame->serialize(bytes);
        for (auto it = clients.begin(); it != clients.end();) {
            bool ok = false;
            try {
                ok = (*it)->send(bytes.data(), static_cast<unsigned int>(bytes.size()),
                                 kSendTimeoutMs) == bytes.size();
            } catch (const tq::eod::EODError&) {
            }
            if (ok) {
                ++it;
            } else {
                std::cerr << "eod serve: client dropped\n";
                it = clients.erase(it);
            }
        }
        ++sent;
        if (clients.empty() && !options.loop) break;
    }
    std::cerr << "eod serve: " << sent << " frames sent\n";
    return 0;
}

}  // namespace eodtool
