// End to end: `eod record` against small engines on loopback (well-behaved, silent,
// hostile, killed mid-stream), and the data-keeping promises of `eod compress`,
// `decompress` and `info`.

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <eod/eod.h>

#include "eodtoolrun.h"
#include "nettesthelpers.h"
#include "testing/syntheticframe.h"

namespace fs = std::filesystem;
using eodtest::EodTool;
using eodtest::Result;
using Bytes = std::vector<unsigned char>;
using Clock = std::chrono::steady_clock;

extern char** environ;

namespace {

Bytes frameBytes(unsigned int n, bool with_faces = true) {
    boost::shared_ptr<tq::eod::EngineOutputData> frame = eodtesting::syntheticFrame(n);
    if (!with_faces) frame->removeSubObject(tq::eod::FaceSetOutputData::THIS_OBJECT_ID);
    Bytes bytes;
    frame->serialize(bytes);
    return bytes;
}

// The engine's end of the connection, on plain sockets so that a test can also reset it.
struct Peer {
    int fd;
    // Blocks until everything is sent; throws when the recorder has gone.
    void send(const unsigned char* bytes, std::size_t n) {
        while (n > 0) {
            const ssize_t sent = ::send(fd, bytes, n, MSG_NOSIGNAL);
            if (sent <= 0) throw std::runtime_error("the recorder has gone");
            bytes += sent;
            n -= static_cast<std::size_t>(sent);
        }
    }
    void send(const Bytes& bytes) { send(bytes.data(), bytes.size()); }
};

// An engine on 127.0.0.1 that accepts one recorder and runs `act` on the connection; the
// connection closes when `act` returns (with a reset when `reset` is set).
class FakeEngine {
public:
    using Act = std::function<void(Peer&, const std::atomic<bool>& stop)>;

    explicit FakeEngine(Act act, bool reset = false) {
        _listener = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(::bind(_listener, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(::listen(_listener, 1), 0);
        ::getsockname(_listener, reinterpret_cast<sockaddr*>(&address), &size);
        _port = ntohs(address.sin_port);
        _thread = std::thread([this, act, reset] {
            pollfd waiting{_listener, POLLIN, 0};
            if (::poll(&waiting, 1, nettest::kPatientMs) != 1) return;
            Peer peer{::accept(_listener, nullptr, nullptr)};
            try {
                act(peer, _stop);
            } catch (const std::runtime_error&) {
                // The recorder went away: nothing more to send.
            }
            if (reset) {
                const linger abort{1, 0};
                ::setsockopt(peer.fd, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
            }
            ::close(peer.fd);
        });
    }
    ~FakeEngine() {
        _stop = true;
        _thread.join();
        ::close(_listener);
    }

    std::string address() const { return "127.0.0.1:" + std::to_string(_port); }

private:
    int _listener = -1;
    int _port = 0;
    std::atomic<bool> _stop{false};
    std::thread _thread;
};

// Sends frames first..last-1 of the synthetic engine.
FakeEngine::Act sendFrames(unsigned int first, unsigned int last, bool with_faces = true) {
    return [=](Peer& peer, const std::atomic<bool>&) {
        for (unsigned int n = first; n < last; ++n) peer.send(frameBytes(n, with_faces));
    };
}

// Frames sent one every 2 ms until the test ends, with the time each send completed.
class StreamLog {
public:
    FakeEngine::Act act() {
        return [this](Peer& peer, const std::atomic<bool>& stop) {
            for (unsigned int n = 0; !stop; ++n) {
                peer.send(frameBytes(n));
                std::lock_guard<std::mutex> lock(_mutex);
                _sent.push_back(Clock::now());
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        };
    }
    // How many frames had been sent before `t`.
    std::size_t sentBefore(Clock::time_point t) {
        std::lock_guard<std::mutex> lock(_mutex);
        return static_cast<std::size_t>(std::lower_bound(_sent.begin(), _sent.end(), t) - _sent.begin());
    }

private:
    std::mutex _mutex;
    std::vector<Clock::time_point> _sent;
};

// Keeps the connection open, sending nothing, until the test ends.
void waitForEnd(const std::atomic<bool>& stop) {
    while (!stop) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

// The frame numbers the library reads back from a log directory, and whether a log ended
// inside a record.
struct Replay {
    std::vector<unsigned int> frames;
    bool torn = false;
};

Replay replay(const std::string& dir) {
    Replay r;
    tq::eod::io::EngineOutputDataFileReader reader;
    reader.openFiles(dir);
    try {
        while (const auto frame = reader.readData()) r.frames.push_back(frame->frameNum());
    } catch (const tq::eod::io::EngineOutputDataFileError&) {
        r.torn = true;
    }
    return r;
}

std::vector<std::string> fileNames(const std::string& dir) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// `eod ARGS...` as a child process with its output thrown away (stderr to `err` if given).
pid_t spawnEod(const std::vector<std::string>& args, const std::string& err = "/dev/null") {
    std::vector<std::string> all = {EOD_TOOL_PATH};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : all) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = -1;
    EXPECT_EQ(posix_spawn(&pid, EOD_TOOL_PATH, &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios_base::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

TEST_F(EodTool, RecordRefusesADirectoryOfAnotherSession) {
    fs::create_directories(path("old"));
    std::ofstream(path("old/Timing.tql")) << "old session";
    // Refused before connecting: nobody listens at port 1.
    const Result r = run("record --connect 127.0.0.1:1 --out " + path("old"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "eod: " + path("old") +
                         ": holds 1 log files of another session (give --overwrite to replace them)\n");
    EXPECT_EQ(eodtest::readText(path("old/Timing.tql")), "old session");
}

TEST_F(EodTool, OverwriteReplacesTheOldSessionOnlyOnceFramesArrive) {
    fs::create_directories(path("rec"));
    std::ofstream(path("rec/Head.tql")) << "old session";
    std::ofstream(path("rec/notes.txt")) << "kept";
    {
        // Nobody listens there: the old session stays whole.
        const Result failed = run("record --overwrite --connect 127.0.0.1:1 --out " + path("rec"));
        EXPECT_EQ(failed.status, 1);
        EXPECT_EQ(fileNames(path("rec")), (std::vector<std::string>{"Head.tql", "notes.txt"}));
    }
    FakeEngine engine(sendFrames(0, 30));
    const Result r = run("record --overwrite --connect " + engine.address() + " --out " + path("rec"));
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<std::string> names = fileNames(path("rec"));
    EXPECT_EQ(std::count(names.begin(), names.end(), "Head.tql"), 0);
    EXPECT_EQ(std::count(names.begin(), names.end(), "notes.txt"), 1);
    EXPECT_EQ(replay(path("rec")).frames.size(), 30u);
}

// Faces appear from frame 10 on; their log opens then and holds every face record.
TEST_F(EodTool, RecordLogsRecordTypesThatAppearLate) {
    FakeEngine engine([](Peer& peer, const std::atomic<bool>& stop) {
        sendFrames(0, 10, false)(peer, stop);
        sendFrames(10, 20)(peer, stop);
    });
    const Result r = run("record --connect " + engine.address() + " --out " + path("rec"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("(the engine closed the connection)"), std::string::npos) << r.out;
    ASSERT_TRUE(fs::exists(path("rec/FaceSet.tql")));
    const Result faces = run("info " + path("rec/FaceSet.tql"));
    EXPECT_NE(faces.out.find("frames: 10, frame numbers 10..19"), std::string::npos) << faces.out;
}

TEST_F(EodTool, RecordWithIdsLogsExactlyThose) {
    FakeEngine engine(sendFrames(0, 10));
    const Result r = run("record --ids 10,94 --connect " + engine.address() + " --out " + path("rec"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fileNames(path("rec")), (std::vector<std::string>{"FaceSet.itql", "FaceSet.tql",
                                                                 "Timing.itql", "Timing.tql"}));
}

// Junk, other records, silence: exit 1 with what arrived, and nothing left behind.
TEST_F(EodTool, RecordThatGetsNoFrameSaysWhatItSawAndLeavesNothing) {
    struct Case {
        std::string name;
        FakeEngine::Act act;
        std::string seen;
    };
    const std::vector<Case> cases = {
        {"silent", [](Peer&, const std::atomic<bool>&) {},
         "the engine closed the connection: no frame received: 0 bytes received, 0 records of "
         "other ids, 0 bytes left undecoded"},
        {"other ids",
         [](Peer& peer, const std::atomic<bool>&) {
             peer.send(Bytes{50, 0, 2, 1, 2, 0, 0, 0, 0, 0, 0, 50, 0, 9});
         },
         "the engine closed the connection: no frame received: 14 bytes received, 3 records "
         "of other ids (0, 50), 3 bytes left undecoded"},
        {"undecodable",
         [](Peer& peer, const std::atomic<bool>&) {
             // A frame whose header announces one byte less than its fields take.
             Bytes broken;
             tq::eod::EngineOutputData().serialize(broken);
             broken[2] -= 1;
             broken.pop_back();
             peer.send(broken);
         },
         "SerializableFactory::newObject - could not unSerialize object: no frame received: 8 "
         "bytes received, 0 records of other ids, 8 bytes left undecoded"},
        {"idle", [](Peer&, const std::atomic<bool>& stop) { waitForEnd(stop); },
         "idle: no frame received: 0 bytes received"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        FakeEngine engine(c.act);
        const Result r =
            run("record --idle 0.5 --connect " + engine.address() + " --out " + path("rec"));
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find(engine.address() + " -> " + path("rec") + ": " + c.seen),
                  std::string::npos)
            << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_FALSE(fs::exists(path("rec")));
    }
}

// An engine that sends nothing but records of an unregistered id, without pause: the time
// limit, the idle limit and SIGINT still stop the recorder.
TEST_F(EodTool, RecordStopsOnTimeWhileOtherRecordsPourIn) {
    const auto flood = [](Peer& peer, const std::atomic<bool>& stop) {
        const Bytes zeros(1 << 16, 0);
        while (!stop) peer.send(zeros);
    };
    for (const char* limit : {"--seconds 0.5", "--idle 0.5"}) {
        SCOPED_TRACE(limit);
        FakeEngine engine(flood);
        const Clock::time_point start = Clock::now();
        const Result r = run(std::string("record ") + limit + " --connect " + engine.address() + " --out " + path("rec"));
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(3));
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find("records of other ids (0)"), std::string::npos) << r.err;
    }
    FakeEngine engine(flood);
    const pid_t pid = spawnEod({"record", "--connect", engine.address(), "--out", path("rec")});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ::kill(pid, SIGINT);
    const Clock::time_point start = Clock::now();
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(WIFEXITED(status));
}

TEST_F(EodTool, RecordReportsAStreamThatEndsInsideARecord) {
    FakeEngine engine([](Peer& peer, const std::atomic<bool>& stop) {
        sendFrames(0, 5)(peer, stop);
        const Bytes cut = frameBytes(5);
        peer.send(cut.data(), 100);
    });
    const Result r = run("record --connect " + engine.address() + " --out " + path("rec"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("tail: truncated: the stream ends inside a record; the last good record "
                         "ends at byte " +
                         std::to_string(5 * frameBytes(0).size())),
              std::string::npos)
        << r.out;
}

// A reset after frames: the summary is printed, the frames are in the logs, exit 1.
TEST_F(EodTool, RecordPrintsTheSummaryWhenTheConnectionIsReset) {
    FakeEngine engine(
        [](Peer& peer, const std::atomic<bool>& stop) {
            sendFrames(0, 20)(peer, stop);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        },
        true);
    const Result r = run("record --connect " + engine.address() + " --out " + path("rec"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("20 frames recorded"), std::string::npos) << r.out << r.err;
    EXPECT_NE(r.err.find("Failed to receive data."), std::string::npos) << r.err;
    EXPECT_EQ(replay(path("rec")).frames.size(), 20u);
}

// The recorder is killed with SIGKILL at random moments while frames stream in: every frame
// sent more than a flush interval (plus slack for the loopback and a busy machine) before
// the kill is in the logs, and a log cut inside a record shows in `eod info` as a
// truncated tail.
TEST_F(EodTool, AKilledRecorderKeepsEveryFrameOlderThanOneFlushInterval) {
    const double flush_interval = 0.1;
    const auto slack = std::chrono::milliseconds(150);
    std::mt19937 random(7);
    int torn = 0;
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const std::string dir = path("rec" + std::to_string(round));
        StreamLog stream;
        FakeEngine engine(stream.act());
        const pid_t pid = spawnEod({"record", "--flush-interval", std::to_string(flush_interval),
                                    "--connect", engine.address(), "--out", dir});
        const auto streaming = [&] { return stream.sentBefore(Clock::now()) > 0; };
        for (int wait = 0; wait < 500 && !streaming(); ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(350 + random() % 350));
        ::kill(pid, SIGKILL);
        const Clock::time_point killed = Clock::now();
        ASSERT_EQ(::waitpid(pid, nullptr, 0), pid);
        const std::size_t must_have = stream.sentBefore(
            killed - std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(flush_interval)) -
            slack);
        ASSERT_GT(must_have, 0u);
        const Replay logs = replay(dir);
        ASSERT_GE(logs.frames.size(), must_have);
        for (std::size_t n = 0; n < must_have; ++n) ASSERT_EQ(logs.frames[n], n);
        if (logs.torn) {
            ++torn;
            const Result info = run("info " + dir);
            EXPECT_NE(info.out.find("tail: truncated"), std::string::npos) << info.out;
        }
    }
    std::cout << "torn tails: " << torn << " of 20 kills\n";
}

// SIGTERM while frames stream in: the recorder flushes, exits 0, and the logs hold every
// frame sent before the signal (loopback delivers them within a few milliseconds).
TEST_F(EodTool, ASignalStopsTheRecorderWithEveryFrameOnDisk) {
    StreamLog stream;
    FakeEngine engine(stream.act());
    // A flush interval far beyond the test: only the stop itself can flush.
    const pid_t pid = spawnEod({"record", "--flush-interval", "100", "--connect", engine.address(),
                                "--out", path("rec")});
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    ::kill(pid, SIGTERM);
    const Clock::time_point signalled = Clock::now();
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const std::size_t must_have = stream.sentBefore(signalled - std::chrono::milliseconds(50));
    const Replay logs = replay(path("rec"));
    EXPECT_FALSE(logs.torn);
    EXPECT_GT(must_have, 0u);
    EXPECT_GE(logs.frames.size(), must_have);
}

// A raw file of one zero-length record frame (tag 0, CRC 0, length 0) and damaged streams:
// no crash, exit 1 with the byte range, and no output file.
TEST_F(EodTool, DecompressOfDamagedStreamsFailsWithTheByteOffset) {
    ASSERT_EQ(run("demo --frames 60 --out " + path("demo")).status, 0);
    ASSERT_EQ(run("compress " + path("demo/Timing.tql") + " " + path("t.z")).status, 0);
    std::ifstream in(path("t.z"), std::ios_base::binary);
    const Bytes z((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(z.size(), 100u);

    writeFile(path("truncated.z"), Bytes(z.begin(), z.begin() + static_cast<long>(z.size() / 2)));
    Result r = run("decompress " + path("truncated.z") + " " + path("out.raw"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(": truncated: the stream ends at byte " + std::to_string(z.size() / 2)),
              std::string::npos)
        << r.err;
    EXPECT_FALSE(fs::exists(path("out.raw")));

    Bytes corrupt = z;
    corrupt[z.size() / 2] ^= 0x55;
    writeFile(path("corrupt.z"), corrupt);
    r = run("decompress " + path("corrupt.z") + " " + path("out.raw"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(": corrupt stream in bytes 0.." + std::to_string(z.size() - 1) + ": "),
              std::string::npos)
        << r.err;
    EXPECT_FALSE(fs::exists(path("out.raw")));

    // Raw deflate of the frame {tag 0, CRC 0, length 0} (12 zero bytes), then a full flush.
    const Bytes null_frame = {0x62, 0x60, 0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0xff, 0xff};
    writeFile(path("null.z"), null_frame);
    r = run("decompress " + path("null.z") + " " + path("out.raw"));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fs::file_size(path("out.raw")), 0u);
}

TEST_F(EodTool, ConvertRefusesDirectoriesAndKeepsOutputsWhole) {
    ASSERT_EQ(run("demo --frames 30 --out " + path("demo")).status, 0);
    for (const std::string& args : {"compress " + path("demo") + " " + path("d.z"),
                                   "decompress " + path("demo") + " " + path("d.raw"),
                                   "compress " + path("demo/Timing.tql") + " " + path("demo")}) {
        SCOPED_TRACE(args);
        const Result r = run(args);
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find("is a directory"), std::string::npos) << r.err;
    }
    EXPECT_FALSE(fs::exists(path("d.z")));
    EXPECT_FALSE(fs::exists(path("d.raw")));
    // A failed run keeps an existing output as it was and leaves no temporary file.
    std::ofstream(path("keep.raw")) << "before";
    writeFile(path("junk.z"), Bytes(100, 0xee));
    EXPECT_EQ(run("decompress " + path("junk.z") + " " + path("keep.raw")).status, 1);
    EXPECT_EQ(eodtest::readText(path("keep.raw")), "before");
    EXPECT_EQ(fileNames(_dir.string()).size(), 5u);  // demo, junk.z, keep.raw, stdout, stderr
}

TEST_F(EodTool, InfoAndCatRefuseFifosAndDevicesAndInfoSkipsBadEntries) {
    ASSERT_EQ(::mkfifo(path("pipe.tql").c_str(), 0600), 0);
    for (const std::string& args : {"info " + path("pipe.tql"), std::string("info /dev/zero"),
                                    "cat " + path("pipe.tql")}) {
        SCOPED_TRACE(args);
        const std::string target = args.substr(args.find(' ') + 1);
        const Result r = run(args);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.err, "eod: " + target + ": not a regular file\n");
    }
    ASSERT_EQ(run("demo --frames 30 --out " + path("demo")).status, 0);
    fs::create_symlink("loop.tql", path("demo/loop.tql"));
    const Result r = run("info " + path("demo"));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find(path("demo/loop.tql") + ": skipped: "), std::string::npos) << r.err;
    EXPECT_NE(r.out.find("frames: 30, frame numbers 0..29"), std::string::npos) << r.out;
}

// Ten thousand unknown records and one record whose header announces 1.5 GiB in a sparse
// file: counted in a few numbers, never held.
TEST_F(EodTool, InfoCountsHugeAndManyRecordsWithoutHoldingThem) {
    Bytes bytes = frameBytes(0);
    bytes.resize(bytes.size() + 30000, 0);
    writeFile(path("zeros.raw"), bytes);
    Result r = run("info " + path("zeros.raw"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("10000 records of id 0 (first at byte " + std::to_string(frameBytes(0).size()) +
                         ", last at byte " + std::to_string(bytes.size() - 3) + ")"),
              std::string::npos)
        << r.out;

    Bytes huge = frameBytes(0);
    const Bytes header = {9, 0xff, 0xff, 0x60, 0x00, 0x00, 0x00};  // 1.5 GiB of frame
    huge.insert(huge.end(), header.begin(), header.end());
    writeFile(path("huge.raw"), huge);
    fs::resize_file(path("huge.raw"), huge.size() + (std::uint64_t(3) << 29));
    r = run("info " + path("huge.raw"));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("corrupt records: 1 at bytes " + std::to_string(frameBytes(0).size())),
              std::string::npos)
        << r.out;
}

// Three clients that never read (with tiny receive buffers, so the server's sends to them
// soon find no room) and one that does: the reader never waits long for a frame, and the
// stalled clients are dropped and reported.
TEST_F(EodTool, ServeNeverLetsAStalledClientDelayAnother) {
    const pid_t pid = spawnEod({"serve", "--synthetic", "--port", "0", "--rate", "1000", "--frames", "3000"},
                               path("serve.err"));
    std::smatch port;
    const std::regex listening("listening on port ([0-9]+)");
    std::string text;
    for (int i = 0; i < 200 && !std::regex_search(text, port, listening); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
        text = eodtest::readText(path("serve.err"));
    }
    ASSERT_TRUE(std::regex_search(text, port, listening)) << text;
    const int port_number = std::stoi(port[1].str());

    std::vector<int> stalled;
    for (int i = 0; i < 3; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        const int tiny = 1024;
        ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &tiny, sizeof tiny);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port_number));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ASSERT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        stalled.push_back(fd);
    }
    tq::eod::io::EngineOutputDataTcpClient reader;
    reader.connect(nettest::loopback(port_number));
    Clock::duration longest_wait{};
    unsigned int frames = 0;
    Clock::time_point last = Clock::now();
    const Clock::time_point start = last;
    while (!reader.peerClosed() && Clock::now() - start < std::chrono::seconds(15)) {
        if (!reader.receive(100)) continue;
        const Clock::time_point now = Clock::now();
        if (frames++ > 0) longest_wait = std::max(longest_wait, now - last);
        last = now;
    }
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    for (int fd : stalled) ::close(fd);
    EXPECT_GT(frames, 2500u);
    EXPECT_LT(longest_wait, std::chrono::milliseconds(250))
        << std::chrono::duration_cast<std::chrono::milliseconds>(longest_wait).count() << " ms";
    const std::string err = eodtest::readText(path("serve.err"));
    std::size_t dropped = 0;
    for (std::size_t at = 0; (at = err.find("dropped: more than 120 frames behind", at)) != std::string::npos; ++at) ++dropped;
    EXPECT_EQ(dropped, 3u) << err;
}
