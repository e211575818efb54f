// `eod serve (PATH | --synthetic) --port P [--host ADDR] [--rate HZ] [--loop] [--frames N]
// [--ids LIST]`: act as an engine and stream frames over TCP, one encoded frame after another,
// to every client that connects.
// Streaming starts when the first client connects, so that client sees every frame;
// later clients join mid-stream. Sends never wait: each client has a queue of the frames
// it has yet to take, filled as fast as its connection drains, so a client that does not
// read delays nobody else. A client that falls more than kMaxFramesBehind frames behind is
// dropped and the drop reported (a frame cut short would spoil the rest of its stream, so
// a client only ever loses whole frames at its end).

#include <chrono>
#include <deque>
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

const double kDefaultRate = 60.0;
const std::size_t kMaxFramesBehind = 120;
// While waiting for the next frame's time, the queues are drained this often.
const auto kPumpInterval = std::chrono::milliseconds(2);
// At the end of the source, how long the clients get to take the frames still queued.
const auto kFinalDrain = std::chrono::seconds(5);

using Bytes = std::shared_ptr<const std::vector<unsigned char>>;

// One connected client and the frames it has yet to take; the first one possibly in part.
struct Client {
    explicit Client(TcpSocket* s) : socket(s) {
        const tq::eod::io::InetAddress& address = socket->getRemoteAddress();
        name = address.getHostIP() + ':' + std::to_string(address.getPort());
    }
    std::unique_ptr<TcpSocket> socket;
    std::string name;
    std::deque<Bytes> queue;
    std::size_t sent_of_front = 0;

    // Sends what the connection takes now; false when the connection failed.
    bool pump() {
        try {
            while (!queue.empty()) {
                const std::vector<unsigned char>& front = *queue.front();
                const unsigned int left = static_cast<unsigned int>(front.size() - sent_of_front);
                const unsigned int n = socket->send(front.data() + sent_of_front, left, 0);
                sent_of_front += n;
                if (n < left) return true;
                queue.pop_front();
                sent_of_front = 0;
            }
        } catch (const tq::eod::EODError&) {
            return false;
        }
        return true;
    }
};

using Clients = std::vector<std::unique_ptr<Client>>;

void drop(Clients& clients, Clients::iterator& it, const std::string& why) {
    std::cerr << "eod serve: client " << (*it)->name << " dropped: " << why << '\n';
    it = clients.erase(it);
}

void pumpAll(Clients& clients) {
    for (auto it = clients.begin(); it != clients.end();) {
        if ((*it)->pump()) {
            ++it;
        } else {
            drop(clients, it, "connection lost");
        }
    }
}

bool anyQueued(const Clients& clients) {
    for (const auto& client : clients) {
        if (!client->queue.empty()) return true;
    }
    return false;
}

// Keeps the queues moving until `until`, or until they are empty when `until_empty`.
void pumpUntil(Clients& clients, Clock::time_point until, bool until_empty) {
    for (;;) {
        pumpAll(clients);
        const Clock::time_point now = Clock::now();
        if (now >= until || (until_empty && !anyQueued(clients))) return;
        std::this_thread::sleep_until(std::min(until, now + kPumpInterval));
    }
}

std::unique_ptr<FrameSource> openSource(const ServeOptions& options) {
    if (options.synthetic) return makeSyntheticSource(options.frames);
    return openRecording(options.path);
}

// Seconds between this frame and the one before: the fixed rate when one is given, else
// the recording's own experiment times, else 60 Hz.
class Pacer {
public:
    explicit Pacer(double rate) : _rate(rate), _next(Clock::now()) {}

    // When the frame is due.
    Clock::time_point dueTime(const EngineOutputData& frame) {
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
        return _next;
    }

private:
    double _rate;
    Clock::time_point _next;
    bool _has_time = false;
    double _time = 0;
};

void acceptClients(TcpSocket& listener, Clients& clients, int timeout_ms) {
    while (TcpSocket* socket = listener.accept(timeout_ms)) {
        clients.push_back(std::make_unique<Client>(socket));
        std::cerr << "eod serve: client " << clients.back()->name << " connected\n";
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
    orToolError(where, [&] {
        listener.open();
        listener.setSocketFlag(TcpSocket::FLAG_REUSE_ADDRESS, true);
        listener.bind(address);
        listener.listen();
    });
    std::cerr << "eod serve: listening on port " << listener.getLocalAddress().getPort() << " ("
              << options.host << ")\n";

    Clients clients;
    while (clients.empty()) acceptClients(listener, clients, 1000);

    Pacer pacer(options.rate);
    unsigned long long sent = 0;
    const FrameRange every_frame;
    while (options.frames == 0 || sent < options.frames) {
        boost::shared_ptr<EngineOutputData> frame = nextSelected(*source, every_frame, ids);
        if (!frame && options.loop && !options.synthetic) {
            source = openSource(options);
            frame = nextSelected(*source, every_frame, ids);
        }
        if (!frame) break;
        pumpUntil(clients, pacer.dueTime(*frame), false);
        acceptClients(listener, clients, 0);
        auto bytes = std::make_shared<std::vector<unsigned char>>();
        frame->serialize(*bytes);
        const Bytes shared = bytes;
        for (auto it = clients.begin(); it != clients.end();) {
            if ((*it)->queue.size() >= kMaxFramesBehind) {
                drop(clients, it, "more than " + std::to_string(kMaxFramesBehind) + " frames behind");
                continue;
            }
            (*it)->queue.push_back(shared);
            ++it;
        }
        pumpAll(clients);
        ++sent;
        if (clients.empty() && !options.loop) break;
    }
    pumpUntil(clients, Clock::now() + kFinalDrain, true);
    for (auto it = clients.begin(); it != clients.end();) {
        if ((*it)->queue.empty()) {
            ++it;
        } else {
            drop(clients, it, std::to_string((*it)->queue.size()) + " frames not taken at the end");
        }
    }
    std::cerr << "eod serve: " << sent << " frames sent\n";
    return 0;
}

}  // namespace eodtool
