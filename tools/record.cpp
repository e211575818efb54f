// `eod record --connect HOST:PORT --out DIR`: the live path. Receives frames from an engine
// with EngineOutputDataTcpClient, logs them per object id, and on stop prints the ledger of
// what arrived.

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <unistd.h>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/engineoutputdatatcpclient.h>
#include <eod/io/inetaddress.h>

#include "commands.h"
#include "frameledger.h"
#include "logids.h"
#include "toolerror.h"

namespace eodtool {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> g_stop{false};

extern "C" void onStopSignal(int) { g_stop = true; }

const int kReceiveTimeoutMs = 100;

tq::eod::io::InetAddress parseAddress(const std::string& text) {
    const std::string::size_type colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
        throw ToolError(text + ": expected HOST:PORT");
    }
    int port = 0;
    try {
        port = std::stoi(text.substr(colon + 1));
    } catch (const std::exception&) {
        throw ToolError(text + ": bad port");
    }
    if (port <= 0 || port > 65535) throw ToolError(text + ": bad port");
    tq::eod::io::InetAddress address(port);
    if (!address.setHost(text.substr(0, colon))) throw ToolError(text + ": unknown host");
    return address;
}

}  // namespace

int runRecord(const RecordOptions& options) {
    const tq::eod::io::InetAddress server = parseAddress(options.connect);
    std::error_code ec;
    std::filesystem::create_directories(options.out, ec);
    if (ec) throw ToolError(options.out + ": " + ec.message());

    tq::eod::io::EngineOutputDataTcpClient client;
    try {
        client.connect(server);
    } catch (const tq::eod::EODError& e) {
        throw ToolError(options.connect + ": " + e.what());
    }
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);

    const bool progress = isatty(STDERR_FILENO) != 0;
    tq::eod::io::EngineOutputDataFileWriter writer;
    FrameLedger ledger;
    const Clock::time_point start = Clock::now();
    Clock::time_point last_frame = start;
    unsigned long long received = 0;
    try {
        while (!g_stop && client.isConnected()) {
            const Clock::time_point now = Clock::now();
            if (options.seconds > 0 && now - start >= std::chrono::duration<double>(options.seconds)) break;
            if (now - last_frame >= std::chrono::duration<double>(options.idle)) break;
            const boost::shared_ptr<tq::eod::EngineOutputData> frame =
                client.receive(kReceiveTimeoutMs);
            if (!frame) continue;
            last_frame = Clock::now();
            if (!writer.areFilesOpen()) {
                const std::vector<char> ids = options.ids.empty()
                                                  ? loggedIdsOf(*frame)
                                                  : std::vector<char>(options.ids.begin(), options.ids.end());
                writer.newFiles(ids, options.out, "", kLogBufferSize);
            }
            writer.writeData(*frame);
            ledger.addFrame(frame->frameNum(), received);
            ++received;
            if (progress && received % 60 == 0) std::cerr << "\rreceived " << received << " frames";
            if (options.frames > 0 && received >= options.frames) break;
        }
    } catch (const tq::eod::EODError& e) {
        throw ToolError(options.connect + " -> " + options.out + ": " + e.what());
    }
    if (progress) std::cerr << '\n';
    writer.closeFiles();
    if (client.isConnected()) client.disconnect();

    std::cout << options.connect << ": " << received << " frames recorded in " << options.out << '\n';
    std::cout << "frames: " << ledger.numFrames();
    if (!ledger.empty()) {
        std::cout << ", frame numbers " << ledger.firstFrameNum() << ".." << ledger.lastFrameNum();
    }
    std::cout << "\nledger:\n";
    ledger.print(std::cout, "  ");
    return 0;
}

}  // namespace eodtool
