// `eod record --connect HOST:PORT --out DIR`: the live path. Receives frames from an engine
// with EngineOutputDataTcpClient, logs them per object id, and on stop prints the ledger of
// what arrived.
//
// A directory holds one session: one that already holds log files is refused unless
// --overwrite, and the old logs are removed only when the first frame arrives, so a session
// that fails to start leaves the old one whole. A session that records nothing leaves
// nothing behind. The logs are flushed every --flush-interval seconds and whenever the
// session stops, so a killed recorder loses at most the frames of the last interval.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <unistd.h>

#include <eod/eoderror.h>
#include <eod/io/engineoutputdatafilereader.h>
#include <eod/io/engineoutputdatafilewriter.h>
#include <eod/io/frameledger.h>
#include <eod/io/engineoutputdatatcpclient.h>
#include <eod/io/index/logindex.h>
#include <eod/io/inetaddress.h>

#include "commands.h"
#include "sessionlogs.h"
#include "toolerror.h"

namespace eodtool {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using tq::eod::io::EngineOutputDataTcpClient;

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

// The ids to log, each with a log file name, checked before anything is created.
std::vector<char> loggedIds(const std::vector<int>& ids) {
    std::vector<char> result;
    for (int id : ids) {
        try {
            tq::eod::io::EngineOutputDataFileWriter::objectIDToFileName(static_cast<char>(id));
        } catch (const tq::eod::EODError&) {
            throw ToolError("--ids: id " + std::to_string(id) + " has no log file name");
        }
        result.push_back(static_cast<char>(id));
    }
    return result;
}

// The log files already in a directory (none for a new one), by the readers' own rule.
std::vector<std::wstring> logFilesIn(const std::string& dir) {
    std::vector<std::wstring> skipped;
    return orToolError(dir, [&] {
        return tq::eod::io::EngineOutputDataFileReader::listLogFiles(fs::u8path(dir).wstring(), skipped);
    });
}

// Makes sure `out` can take a new session; true when the directory was created here.
bool prepareDirectory(const RecordOptions& options) {
    const fs::path out(options.out);
    std::error_code ec;
    if (!fs::exists(out, ec)) {
        fs::create_directories(out, ec);
        if (ec) throw ToolError(options.out + ": " + ec.message());
        return true;
    }
    if (!fs::is_directory(out, ec)) throw ToolError(options.out + ": not a directory");
    const std::size_t old_logs = logFilesIn(options.out).size();
    if (old_logs > 0 && !options.overwrite) {
        throw ToolError(options.out + ": holds " + std::to_string(old_logs) +
                        " log files of another session (give --overwrite to replace them)");
    }
    return false;
}

void removeOldLogs(const RecordOptions& options) {
    for (const std::wstring& wide_log : logFilesIn(options.out)) {
        const std::string log = fs::path(wide_log).u8string();
        std::error_code ec;
        fs::remove(fs::u8path(log), ec);
        if (ec) throw ToolError(log + ": cannot remove: " + ec.message());
        fs::remove(fs::u8path(tq::eod::io::logIndexPath(log)), ec);
    }
}

// Takes back what a session that recorded nothing created.
void removeCreated(const SessionLogs& logs, const RecordOptions& options, bool created_dir) {
    std::error_code ec;
    for (const std::string& file : logs.files()) {
        fs::remove(file, ec);
        fs::remove(tq::eod::io::logIndexPath(file), ec);
    }
    if (created_dir) fs::remove(options.out, ec);
}

// What arrived when no frame did, so the user can tell a silent engine from a wrong port.
std::string nothingRecorded(const EngineOutputDataTcpClient& client) {
    std::ostringstream text;
    text << "no frame received: " << client.bytesReceived() << " bytes received";
    std::uint64_t other = 0;
    std::ostringstream ids;
    for (const auto& entry : client.skippedRecords()) {
        other += entry.second;
        ids << (ids.tellp() > 0 ? ", " : "") << entry.first;
    }
    text << ", " << other << " records of other ids";
    if (other > 0) text << " (" << ids.str() << ')';
    // An undecodable record, or the start of one that never completed.
    text << ", " << client.bufferedBytes() << " bytes left undecoded";
    return text.str();
}

}  // namespace

int runRecord(const RecordOptions& options) {
    const tq::eod::io::InetAddress server = parseAddress(options.connect);
    const std::vector<char> ids = loggedIds(options.ids);
    const bool created_dir = prepareDirectory(options);
    SessionLogs logs(options.out, options.fsync);

    EngineOutputDataTcpClient client;
    // Every stop condition below is checked at least once per receive time-out.
    client.setWholeCallTimeout(true);
    try {
        client.connect(server);
    } catch (const tq::eod::EODError& e) {
        removeCreated(logs, options, created_dir);
        throw ToolError(options.connect + ": " + e.what());
    }
    g_stop = false;
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);

    const bool progress = isatty(STDERR_FILENO) != 0;
    const auto flush_interval = std::chrono::duration<double>(options.flush_interval);
    const int timeout_ms = std::max(
        1, std::min(kReceiveTimeoutMs, static_cast<int>(options.flush_interval * 1000)));
    tq::eod::io::FrameLedger ledger;
    const Clock::time_point start = Clock::now();
    Clock::time_point last_frame = start;
    Clock::time_point next_flush = start + std::chrono::duration_cast<Clock::duration>(flush_interval);
    unsigned long long received = 0;
    std::string stopped = "stopped";
    std::string failure;
    try {
        for (;;) {
            const Clock::time_point now = Clock::now();
            if (g_stop) {
                stopped = "stopped by signal";
                break;
            }
            if (options.seconds > 0 && now - start >= std::chrono::duration<double>(options.seconds)) {
                stopped = "time limit reached";
                break;
            }
            if (now - last_frame >= std::chrono::duration<double>(options.idle)) {
                stopped = "idle";
                break;
            }
            if (now >= next_flush) {
                logs.flush();
                next_flush = now + std::chrono::duration_cast<Clock::duration>(flush_interval);
            }
            const boost::shared_ptr<tq::eod::EngineOutputData> frame = client.receive(timeout_ms);
            if (!frame) {
                if (client.peerClosed()) {
                    stopped = "the engine closed the connection";
                    break;
                }
                continue;
            }
            last_frame = Clock::now();
            if (received == 0) {
                if (options.overwrite) removeOldLogs(options);
                logs.open(ids);
            }
            logs.write(*frame, ids.empty());
            // Where the frame's record began in the stream (the end of what was decoded, less
            // its own size).
            const std::uint64_t end = client.bytesReceived() - client.bufferedBytes();
            const std::uint64_t size = frame->numTotalBytes();
            ledger.addFrame(frame->frameNum(), end >= size ? end - size : 0);
            ++received;
            if (progress && received % 60 == 0) std::cerr << "\rreceived " << received << " frames";
            if (options.frames > 0 && received >= options.frames) {
                stopped = "frame limit reached";
                break;
            }
        }
    } catch (const std::exception& e) {
        failure = e.what();
    }
    if (progress && received >= 60) std::cerr << '\n';
    try {
        logs.flush();
        logs.close();
    } catch (const std::exception& e) {
        if (failure.empty()) failure = e.what();
    }
    const std::string where = options.connect + " -> " + options.out;
    if (received == 0) {
        removeCreated(logs, options, created_dir);
        throw ToolError(where + ": " + (failure.empty() ? stopped : failure) + ": " +
                        nothingRecorded(client));
    }
    if (client.peerClosed() && client.bufferedBytes() > 0) {
        ledger.setTruncatedTail(client.bytesReceived() - client.bufferedBytes(),
                                client.bytesReceived(), "stream");
    }

    std::cout << options.connect << ": " << received << " frames recorded in " << options.out
              << " (" << (failure.empty() ? stopped : "failed") << ")\n";
    std::cout << "frames: " << ledger.numFrames() << ", frame numbers " << ledger.firstFrameNum()
              << ".." << ledger.lastFrameNum() << "\nledger:\n";
    ledger.print(std::cout, "  ");
    // The frames above are on disk; the failure still ended the session early.
    if (!failure.empty()) throw ToolError(where + ": " + failure);
    return 0;
}

}  // namespace eodtool
