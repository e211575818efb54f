#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <eod/eod.h>

#include "nettesthelpers.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace tq::eod::io;
using eodtest::Bytes;
using eodtest::concat;
using eodtest::encode;
using eodtest::serializableError;
using nettest::kPatientMs;

namespace {

const char* const kModule = "io/engineoutputdatatcpclient";
const unsigned int kChunkSizes[] = {1, 2, 3, 5, 7, 13, 32, 1024};

Bytes encodeFrame(unsigned int frame_num, int tokens) {
    EngineOutputData frame;
    frame.setFrameNum(frame_num);
    for (int i = 0; i < tokens; ++i) {
        frame.addSubObject(boost::make_shared<CompressedSerializableToken>(i));
    }
    return encode(frame);
}

// A client connected to a sender over loopback.
struct Stream {
    std::unique_ptr<TcpSocket> listener = nettest::listenOnLoopback();
    EngineOutputDataTcpClient client;
    std::unique_ptr<TcpSocket> sender;

    Stream() { reconnect(); }

    void reconnect() {
        client.connect(listener->getLocalAddress());
        sender.reset(listener->accept(kPatientMs));
        sender->enableNagleAlgortihm(false);
    }

    void send(const Bytes& bytes, std::size_t begin, std::size_t end) {
        sender->send(bytes.data() + begin, static_cast<unsigned int>(end - begin));
    }

    void sendInChunks(const Bytes& bytes, std::size_t chunk) {
        for (std::size_t at = 0; at < bytes.size(); at += chunk) {
            send(bytes, at, std::min(bytes.size(), at + chunk));
        }
    }

    // The encoding of the next frame; empty when receive returned null.
    Bytes receiveEncoded(int timeout_ms = kPatientMs) {
        const boost::shared_ptr<EngineOutputData> frame = client.receive(timeout_ms);
        return frame ? encode(*frame) : Bytes();
    }
};

TEST(EngineOutputDataTcpClient, ReceivingWithoutConnectionIsAUsageError) {
    EngineOutputDataTcpClient client;
    EXPECT_FALSE(client.isConnected());
    EXPECT_USAGE_ERROR(client.receive(0), kModule, "not connected");
}

TEST(EngineOutputDataTcpClient, ConnectFailuresPropagate) {
    TcpSocket bound;  // bound without listening: refuses connections
    bound.open();
    bound.bind(nettest::loopback(0));
    EngineOutputDataTcpClient client;
    EXPECT_THROW(client.connect(bound.getLocalAddress()), SocketError);
    EXPECT_FALSE(client.isConnected());

    Stream s;
    EXPECT_TRUE(s.client.isConnected());
    EXPECT_USAGE_ERROR(s.client.connect(s.listener->getLocalAddress()), "io/tcpsocket",
                       "socket already open");
    s.client.disconnect();
    EXPECT_FALSE(s.client.isConnected());
}

TEST(EngineOutputDataTcpClient, TwoFramesInOneWriteNeedOneRead) {
    Stream s;
    const Bytes first = encodeFrame(1, 3);
    const Bytes second = encodeFrame(2, 0);
    s.sender->send(concat({first, second}));
    EXPECT_EQ(s.receiveEncoded(), first);
    EXPECT_EQ(s.receiveEncoded(0), second);
    EXPECT_EQ(s.receiveEncoded(0), Bytes());
}

TEST(EngineOutputDataTcpClient, ManySmallFramesFromOneWriteComeInOrder) {
    Stream s;
    Bytes all;
    for (unsigned int n = 0; n < 2000; ++n) {
        const Bytes frame = encodeFrame(n, 0);
        all.insert(all.end(), frame.begin(), frame.end());
    }
    s.sender->send(all);
    for (unsigned int n = 0; n < 2000; ++n) {
        const boost::shared_ptr<EngineOutputData> frame = s.client.receive(kPatientMs);
        ASSERT_NE(frame, nullptr) << n;
        ASSERT_EQ(frame->frameNum(), n);
    }
}

// Whatever the pieces, a frame comes out exactly when its last byte is in, not before.
TEST(EngineOutputDataTcpClient, AFrameComesWhenItsLastByteArrives) {
    const Bytes first = encodeFrame(10, 20);
    const Bytes second = encodeFrame(11, 1);
    const Bytes all = concat({first, second});
    for (unsigned int chunk : kChunkSizes) {
        SCOPED_TRACE(chunk);
        Stream s;
        std::vector<Bytes> pending = {first, second};
        std::size_t frame_end = first.size();
        for (std::size_t at = 0; at < all.size(); at += chunk) {
            const std::size_t end = std::min(all.size(), at + chunk);
            s.send(all, at, end);
            while (!pending.empty() && frame_end <= end) {
                ASSERT_EQ(s.receiveEncoded(), pending.front());
                pending.erase(pending.begin());
                frame_end += pending.empty() ? 0 : pending.front().size();
            }
            ASSERT_EQ(s.receiveEncoded(0), Bytes()) << "at " << end;
        }
        EXPECT_TRUE(pending.empty());
    }
}

// A sender on its own thread writes frames and other records in pieces; the frames arrive
// whole and in order and nothing else does.
TEST(EngineOutputDataTcpClient, ReassemblesAStreamAndDropsOtherRecords) {
    const Bytes unknown_id = {50, 0x00, 0x05, 1, 2, 3, 4, 5};
    const CompressedSerializable compressed(Bytes(300, 0xab));
    std::vector<Bytes> frames;
    Bytes stream;
    for (unsigned int n = 0; n < 6; ++n) {
        frames.push_back(encodeFrame(n, static_cast<int>(n * 7)));
        stream = concat({stream, frames.back(), n % 2 ? encode(compressed) : unknown_id});
    }
    for (unsigned int chunk : kChunkSizes) {
        SCOPED_TRACE(chunk);
        Stream s;
        std::thread peer([&] { s.sendInChunks(stream, chunk); });
        for (const Bytes& frame : frames) EXPECT_EQ(s.receiveEncoded(), frame);
        peer.join();
        EXPECT_EQ(s.receiveEncoded(0), Bytes());
    }
}

TEST(EngineOutputDataTcpClient, AnExpiredWaitKeepsThePartialFrame) {
    Stream s;
    const Bytes frame = encodeFrame(5, 4);
    s.send(frame, 0, frame.size() / 2);
    EXPECT_EQ(s.receiveEncoded(20), Bytes());
    EXPECT_EQ(s.receiveEncoded(0), Bytes());
    s.send(frame, frame.size() / 2, frame.size());
    EXPECT_EQ(s.receiveEncoded(), frame);
}

// The client stays connected and keeps the part of the frame it got, so that the caller
// can tell a clean end from one inside a record.
TEST(EngineOutputDataTcpClient, ASenderThatDiesMidFrameLeavesItsBytesBuffered) {
    Stream s;
    const Bytes skipped = {50, 0x00, 0x02, 1, 2};
    const Bytes frame = encodeFrame(5, 4);
    s.sender->send(concat({skipped, frame}));
    s.send(frame, 0, frame.size() - 1);
    s.sender->close();
    EXPECT_EQ(s.receiveEncoded(), frame);
    EXPECT_FALSE(s.client.peerClosed());
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(s.receiveEncoded(), Bytes());
        EXPECT_TRUE(s.client.peerClosed());
        EXPECT_TRUE(s.client.isConnected());
        EXPECT_EQ(s.client.bufferedBytes(), frame.size() - 1);
    }
    EXPECT_EQ(s.client.bytesReceived(), skipped.size() + 2 * frame.size() - 1);
    EXPECT_EQ(s.client.skippedRecords(), (std::map<int, std::uint64_t>{{50, 1}}));
    s.client.disconnect();
    EXPECT_EQ(s.client.bufferedBytes(), 0u);
    s.reconnect();
    EXPECT_FALSE(s.client.peerClosed());
    EXPECT_EQ(s.client.bytesReceived(), 0u);
    EXPECT_TRUE(s.client.skippedRecords().empty());
}

// A sender that streams records of other ids without pause: with the whole-call time-out,
// every call returns on time, and the frame sent after them still arrives.
TEST(EngineOutputDataTcpClient, AWholeCallTimeoutReturnsWhileOtherRecordsPourIn) {
    Stream s;
    EXPECT_FALSE(s.client.wholeCallTimeout());
    s.client.setWholeCallTimeout(true);
    const Bytes other(3 << 18, 0);  // records of id 0, three bytes each
    std::thread peer([&] {
        s.sender->send(other);
        s.sender->send(encodeFrame(7, 1));
    });
    Bytes frame;
    int empty_calls = 0;
    const auto start = std::chrono::steady_clock::now();
    while (frame.empty() && std::chrono::steady_clock::now() - start < std::chrono::milliseconds(kPatientMs)) {
        const auto call = std::chrono::steady_clock::now();
        frame = s.receiveEncoded(5);
        EXPECT_LT(std::chrono::steady_clock::now() - call, std::chrono::milliseconds(500));
        if (frame.empty()) ++empty_calls;
    }
    peer.join();
    EXPECT_EQ(frame, encodeFrame(7, 1));
    EXPECT_GT(empty_calls, 1);
    EXPECT_EQ(s.client.skippedRecords().at(0), other.size() / 3);
}

TEST(EngineOutputDataTcpClient, ReconnectingForgetsTheOldConnectionsBytes) {
    Stream s;
    const Bytes frame = encodeFrame(8, 2);
    s.send(frame, 0, 5);
    EXPECT_EQ(s.receiveEncoded(20), Bytes());
    s.client.disconnect();
    s.reconnect();
    s.sender->send(frame);
    EXPECT_EQ(s.receiveEncoded(), frame);
}

TEST(EngineOutputDataTcpClient, AHugeRecordIsRefusedFromItsHeader) {
    Stream s;
    s.sender->send(Bytes{9, 0xff, 0xff, 0xff});
    EXPECT_EQ(s.receiveEncoded(20), Bytes());  // the size is not complete yet
    s.sender->send(Bytes{0xff, 0xff, 0xff});
    EXPECT_EQ(serializableError([&] { s.client.receive(kPatientMs); }),
              "EngineOutputDataTcpClient::receive - record of 4294967302 bytes exceeds the "
              "maximum record size of 67108864 bytes");
    // The refused bytes are gone; a sender that goes on with whole records is understood.
    const Bytes frame = encodeFrame(3, 1);
    s.sender->send(frame);
    EXPECT_EQ(s.receiveEncoded(), frame);
}

TEST(EngineOutputDataTcpClient, TheMaximumRecordSizeIsInclusive) {
    const Bytes frame = encodeFrame(3, 10);
    Stream s;
    EXPECT_EQ(s.client.maxRecordSize(), 64u << 20);
    s.client.setMaxRecordSize(static_cast<unsigned int>(frame.size()));
    s.sender->send(frame);
    EXPECT_EQ(s.receiveEncoded(), frame);
    s.client.setMaxRecordSize(static_cast<unsigned int>(frame.size() - 1));
    s.sender->send(frame);
    EXPECT_THROW(s.client.receive(kPatientMs), SerializableError);
}

TEST(EngineOutputDataTcpClient, MaximumRecordSizeRange) {
    EngineOutputDataTcpClient client;
    for (unsigned int bad : {0u, 2u, (1u << 30) + 1}) {
        SCOPED_TRACE(bad);
        EXPECT_USAGE_ERROR(client.setMaxRecordSize(bad), kModule, "max_record_size out of range");
        EXPECT_EQ(client.maxRecordSize(), EngineOutputDataTcpClient::DEFAULT_MAX_RECORD_SIZE);
    }
    client.setMaxRecordSize(3);
    EXPECT_EQ(client.maxRecordSize(), 3u);
    client.setMaxRecordSize(1u << 30);
    EXPECT_EQ(client.maxRecordSize(), 1u << 30);
}

TEST(EngineOutputDataTcpClient, AnUndecodableRecordStaysAndFailsAgain) {
    Stream s;
    // A frame whose header announces one byte less than its fields take.
    Bytes broken = encodeFrame(1, 0);
    broken[2] -= 1;
    broken.pop_back();
    s.sender->send(broken);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(serializableError([&] { s.client.receive(kPatientMs); }),
                  "SerializableFactory::newObject - could not unSerialize object");
    }
    s.client.disconnect();
    EXPECT_FALSE(s.client.isConnected());
}

// Random bytes end in a refusal, a decoding error or the end of the stream: never a crash
// or a hang.
TEST(EngineOutputDataTcpClient, SurvivesGarbage) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Bytes garbage(3000);
        for (unsigned char& b : garbage) b = static_cast<unsigned char>(random());
        if (seed % 2) garbage[0] = EngineOutputData::THIS_OBJECT_ID;
        Stream s;
        s.client.setMaxRecordSize(4096);
        s.sender->send(garbage);
        s.sender->close();
        int calls = 0;
        try {
            while (s.client.receive(kPatientMs) && ++calls < 1000) {
            }
        } catch (const SerializableError&) {
        }
        EXPECT_LT(calls, 1000);
    }
}

}  // namespace
