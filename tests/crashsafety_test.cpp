// A recording survives its writer being killed. A child process writes the synthetic
// engine's frames to per-object logs and, after each EngineOutputDataFileWriter::flush(),
// reports the last frame number it wrote over a pipe. The parent kills it with SIGKILL at a
// random moment and replays the logs: every log must be a byte prefix of what the writer
// would have written, the reader must return exactly the frames those prefixes hold
// (every flushed frame whole), and a torn tail may only show as the corrupt-logfile error
// after the last frame.

#include <eod/eod.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "recordtesting.h"
#include "testfiles.h"
#include "testing/syntheticframe.h"

using namespace tq::eod;
using namespace tq::eod::io;
using eodtest::Bytes;
namespace fs = std::filesystem;

namespace {

using FramePtr = boost::shared_ptr<EngineOutputData>;

// Timing, head V2, eye, inertia, GPS V2, engine state, world V2 and face V2: every record
// of a synthetic frame, the face set's children included.
const std::vector<char> kLoggedIds = {10, 15, 16, 32, 35, 40, 43, 93};

// The frame the engine hands over as frame i. In every third run of 8 frames nobody faces
// the camera and the face set is missing, so the face, head and eye logs lag behind the
// others.
FramePtr engineFrame(unsigned int i) {
    FramePtr frame = eodtesting::syntheticFrame(i);
    if (i / 8 % 3 == 2) frame->removeSubObject(FaceSetOutputData::THIS_OBJECT_ID);
    return frame;
}

// The sub-object that the writer logs under `id`: the frame's own or its face set's.
boost::shared_ptr<const Serializable> loggedSubObject(const EngineOutputData& frame, char id) {
    if (boost::shared_ptr<const Serializable> sub = frame.subObject(id)) return sub;
    const auto face_set = boost::dynamic_pointer_cast<const SerializableComposite>(
        frame.subObject(FaceSetOutputData::THIS_OBJECT_ID));
    return face_set ? face_set->subObject(id) : boost::shared_ptr<const Serializable>();
}

struct Round {
    int buffer_size;
    unsigned int flush_every;    // frames written between two flushes
    unsigned int kill_after_us;  // after the child's first report
};

// The child: writes frames until it is killed. Nothing here returns into the test
// framework; the process ends with _exit.
[[noreturn]] void writeUntilKilled(const std::string& dir, const Round& round, int report_fd) {
    int status = 0;
    try {
        EngineOutputDataFileWriter writer;
        writer.newFiles(kLoggedIds, dir, "", round.buffer_size);
        for (unsigned int i = 0; i < 10000000; ++i) {
            writer.writeData(*engineFrame(i));
            if ((i + 1) % round.flush_every != 0) continue;
            writer.flush();
            if (write(report_fd, &i, sizeof i) != sizeof i) break;
        }
    } catch (...) {
        status = 1;
    }
    _exit(status);
}

// Kills and reaps the child however the test leaves the scope.
struct ChildGuard {
    pid_t pid = -1;
    ~ChildGuard() {
        if (pid <= 0) return;
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
};

// What a killed writer left in the log directory, checked record by record against what
// it was given.
struct Recording {
    std::vector<Bytes> frames;      // the merged frames the reader must return, in order
    std::vector<std::string> torn;  // paths of logs that end inside a record, sorted
    std::vector<bool> whole;        // whole[i]: frame i is complete in every log
};

// Walks the logs frame by frame: each must continue with the record the writer makes of
// the frame's sub-object, up to its end; the last record may be cut off.
void inspect(const fs::path& dir, Recording& out) {
    struct Log {
        char id;
        std::string path;
        Bytes bytes;
        std::size_t pos = 0;
    };
    std::vector<Log> logs;
    for (char id : kLoggedIds) {
        const fs::path name = fs::path(EngineOutputDataFileWriter::objectIDToFileName(id))
                                  .concat(EngineOutputData::LOGFILE_EXTENSION());
        // The reader names a file by the directory, a "/" and the file name.
        const std::string path = dir.string() + "/" + name.string();
        logs.push_back({id, path, eodtest::readFile(dir / name)});
    }
    const auto unread = [&] {
        return std::any_of(logs.begin(), logs.end(),
                           [](const Log& log) { return log.pos < log.bytes.size(); });
    };
    for (unsigned int i = 0; unread(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        const FramePtr frame = engineFrame(i);
        EngineOutputData merged;
        merged.setFrameNum(i);
        bool whole = true;
        for (Log& log : logs) {
            const boost::shared_ptr<const Serializable> sub = loggedSubObject(*frame, log.id);
            if (!sub) continue;
            EngineOutputData single;
            single.setFrameNum(i);
            single.addSubObject(boost::shared_ptr<Serializable>(sub->clone()));
            const Bytes record = eodtest::encode(single);
            const std::size_t left = log.bytes.size() - log.pos;
            const std::size_t n = std::min(left, record.size());
            ASSERT_TRUE(std::equal(record.begin(), record.begin() + std::ptrdiff_t(n),
                                   log.bytes.begin() + std::ptrdiff_t(log.pos)))
                << log.path << " differs from what was written at byte " << log.pos;
            log.pos += n;
            if (n == record.size()) {
                merged.addSubObject(boost::shared_ptr<Serializable>(sub->clone()));
            } else {
                whole = false;
                if (n > 0) out.torn.push_back(log.path);
            }
        }
        out.whole.push_back(whole);
        if (merged.numSubObjects() > 0) out.frames.push_back(eodtest::encode(merged));
    }
    std::sort(out.torn.begin(), out.torn.end());
}

class CrashSafety : public ::testing::Test {
  protected:
    // Runs one writer, kills it and collects the frame numbers it reported as flushed.
    void recordAndKill(const fs::path& dir, const Round& round,
                       std::vector<unsigned int>& reports) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        ChildGuard child;
        child.pid = fork();
        if (child.pid == 0) {
            close(fds[0]);
            writeUntilKilled(dir.string(), round, fds[1]);
        }
        close(fds[1]);
        // Never kill(-1, ...): that would signal every process of the user.
        ASSERT_GT(child.pid, 0);
        unsigned int report = 0;
        // The kill lands while frames are being written, not while the child starts up.
        pollfd started{fds[0], POLLIN, 0};
        if (poll(&started, 1, 20000) == 1 &&
            read(fds[0], &report, sizeof report) == sizeof report) {
            reports.push_back(report);
            usleep(round.kill_after_us);
        }
        kill(child.pid, SIGKILL);
        int status = 0;
        EXPECT_EQ(waitpid(child.pid, &status, 0), child.pid);
        child.pid = -1;
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            << "the writer ended by itself with status " << status;
        while (read(fds[0], &report, sizeof report) == sizeof report) reports.push_back(report);
        close(fds[0]);
    }
};

TEST_F(CrashSafety, KilledWriterLosesNothingItFlushed) {
    // Each repetition (--gtest_repeat) draws new rounds; a failure names its seed.
    static unsigned int repetition = 0;
    const unsigned int seed = 1 + repetition++;
    std::mt19937 gen(seed);
    const int buffer_sizes[] = {0, 256, 4096, 65536};
    int torn_logs = 0;
    for (int r = 0; r < 10; ++r) {
        const auto draw = [&](unsigned int n) { return static_cast<unsigned int>(gen() % n); };
        // Braces evaluate left to right, so a seed always gives the same rounds.
        const Round round{buffer_sizes[draw(4)], 1 + draw(8), draw(40000)};
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(r) + ": buffer " +
                     std::to_string(round.buffer_size) + ", flush every " +
                     std::to_string(round.flush_every) + ", kill after " +
                     std::to_string(round.kill_after_us) + " us");
        eodtest::TempDir dir;
        std::vector<unsigned int> flushed;
        recordAndKill(dir.path(), round, flushed);
        if (HasFatalFailure()) return;
        ASSERT_FALSE(flushed.empty()) << "the writer never reported a flush";
        for (std::size_t k = 0; k < flushed.size(); ++k) {
            ASSERT_EQ(flushed[k], (k + 1) * round.flush_every - 1);
        }

        Recording recording;
        inspect(dir.path(), recording);
        if (HasFatalFailure()) return;
        torn_logs += static_cast<int>(recording.torn.size());
        ASSERT_GT(recording.whole.size(), flushed.back());
        for (unsigned int i = 0; i <= flushed.back(); ++i) {
            ASSERT_TRUE(recording.whole[i]) << "flushed frame " << i << " is not in every log";
        }

        EngineOutputDataFileReader reader;
        reader.openFiles(dir.path().string());
        reader.setTornTailsLast(true);
        std::vector<Bytes> frames;
        std::vector<std::string> errors;
        for (;;) {
            try {
                const FramePtr frame = reader.readData();
                if (!frame) break;
                EXPECT_TRUE(errors.empty()) << "frame " << frame->frameNum() << " after an error";
                frames.push_back(eodtest::encode(*frame));
            } catch (const EngineOutputDataFileError& e) {
                errors.push_back(std::string(e.what()) + ": " + e.path());
                ASSERT_LE(errors.size(), kLoggedIds.size());
            }
        }
        EXPECT_TRUE(frames == recording.frames)
            << frames.size() << " frames read, " << recording.frames.size() << " on disk";
        std::vector<std::string> expected_errors;
        for (const std::string& path : recording.torn) {
            expected_errors.push_back(
                "EngineOutputDataFileReader::readData() - corrupt or invalid logfile: " + path);
        }
        EXPECT_EQ(errors, expected_errors);
        EXPECT_TRUE(reader.endOfData());
    }
    std::cout << "[          ] logs ending inside a record: " << torn_logs << "\n";
}

}  // namespace
