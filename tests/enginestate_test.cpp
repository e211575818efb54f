// Engine, head tracker and infrared pod state records.

#include <eod/enginestateoutputdata.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/irpodstateoutputdata.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;

namespace {

IRPodStateOutputData samplePod() {
    IRPodStateOutputData pod;
    pod.setState(1);
    pod.setPosition({0.5f, -1.25f, 2.0f});
    return pod;
}

EngineStateOutputData sampleEngineState() {
    EngineStateOutputData engine(1);
    engine.addSubObject(boost::make_shared<IRPodStateOutputData>(samplePod()));
    engine.addSubObject(boost::make_shared<HeadTrackerStateOutputData>(3));
    return engine;
}

}  // namespace

TEST(StateChecks, EngineStateAcceptsMinusOneToOne) {
    for (int state = -3; state <= 3; ++state) {
        SCOPED_TRACE(state);
        EngineStateOutputData engine;
        if (state >= -1 && state <= 1) {
            engine.setState(state);
            EXPECT_EQ(engine.state(), state);
            EXPECT_EQ(EngineStateOutputData(state).state(), state);
        } else {
            engine.setState(0);
            EXPECT_USAGE_ERROR(engine.setState(state), "enginestateoutputdata", "unknown state");
            EXPECT_EQ(engine.state(), 0);
            EXPECT_USAGE_ERROR(EngineStateOutputData rejected(state), "enginestateoutputdata",
                               "unknown state");
        }
    }
}

TEST(StateChecks, HeadTrackerAcceptsMinusOneToFour) {
    for (int state = -3; state <= 6; ++state) {
        SCOPED_TRACE(state);
        HeadTrackerStateOutputData tracker;
        if (state >= -1 && state <= 4) {
            tracker.setState(state);
            EXPECT_EQ(tracker.state(), state);
            EXPECT_EQ(HeadTrackerStateOutputData(state).state(), state);
        } else {
            tracker.setState(2);
            EXPECT_USAGE_ERROR(tracker.setState(state), "headtrackerstateoutputdata",
                               "state invalid");
            EXPECT_EQ(tracker.state(), 2);
            EXPECT_USAGE_ERROR(HeadTrackerStateOutputData rejected(state),
                               "headtrackerstateoutputdata", "state invalid");
        }
    }
}

TEST(StateChecks, IRPodAcceptsZeroAndOne) {
    for (int state = -2; state <= 3; ++state) {
        SCOPED_TRACE(state);
        IRPodStateOutputData pod = samplePod();
        if (state == 0 || state == 1) {
            pod.setState(state);
            EXPECT_EQ(pod.state(), state);
        } else {
            EXPECT_USAGE_ERROR(pod.setState(state), "irpodstateoutputdata", "invalid state");
            EXPECT_EQ(pod.state(), 1);
        }
    }
}

TEST(StateChecks, IRPodPositionMustBeThreeD) {
    IRPodStateOutputData pod = samplePod();
    for (std::size_t size : {0u, 2u, 4u}) {
        SCOPED_TRACE(size);
        EXPECT_USAGE_ERROR(pod.setPosition(std::vector<float>(size, 9.0f)), "irpodstateoutputdata",
                           "expected 3D position");
        EXPECT_EQ(pod.position(), (std::vector<float>{0.5f, -1.25f, 2.0f}));
    }
}

TEST(StateRecords, DefaultsAndSizes) {
    EXPECT_EQ(EngineStateOutputData().state(), -1);
    EXPECT_EQ(HeadTrackerStateOutputData().state(), -1);
    EXPECT_EQ(IRPodStateOutputData().state(), 0);
    EXPECT_EQ(IRPodStateOutputData().position(), std::vector<float>(3, 0.0f));
    // header, flag, own data, count
    EXPECT_EQ(encode(HeadTrackerStateOutputData()).size(), 3u + 1 + 4 + 1);
    EXPECT_EQ(encode(IRPodStateOutputData()).size(), 3u + 1 + 16 + 1);
}

TEST(StateRecords, EngineStateWithoutChildrenIsItsStateOnly) {
    EngineStateOutputData engine;
    EXPECT_EQ(encode(engine), (Bytes{40, 0x00, 0x06, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}));
    EXPECT_FALSE(engine.headtrackerStateOutputData());
    EXPECT_FALSE(engine.irPodStateOutputData());
    const EngineStateOutputData& const_engine = engine;
    EXPECT_FALSE(const_engine.headtrackerStateOutputData());
    EXPECT_FALSE(const_engine.irPodStateOutputData());
}

TEST(StateRecords, IRPodBytes) {
    EXPECT_EQ(encode(samplePod()),
              (Bytes{42,   0x00, 0x12, 0x01, 0x00, 0x00, 0x00, 0x01, 0x3F, 0x00, 0x00,
                     0x00, 0xBF, 0xA0, 0x00, 0x00, 0x40, 0x00, 0x00, 0x00, 0x00}));
}

TEST(StateRecords, EngineStateRoundTripsWithItsChildren) {
    const auto read = eodtest::decodeViaFactory<EngineStateOutputData>(encode(sampleEngineState()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->state(), 1);
    ASSERT_TRUE(read->headtrackerStateOutputData());
    EXPECT_EQ(read->headtrackerStateOutputData()->state(), 3);
    const EngineStateOutputData& const_read = *read;
    ASSERT_TRUE(const_read.irPodStateOutputData());
    EXPECT_EQ(const_read.irPodStateOutputData()->state(), 1);
    EXPECT_EQ(const_read.irPodStateOutputData()->position(),
              (std::vector<float>{0.5f, -1.25f, 2.0f}));
}

TEST(StateRecords, AccessorsReachTheStoredChild) {
    EngineStateOutputData engine = sampleEngineState();
    engine.headtrackerStateOutputData()->setState(4);
    EXPECT_EQ(engine.headtrackerStateOutputData()->state(), 4);
    const EngineStateOutputData copy(engine);
    engine.irPodStateOutputData()->setState(0);
    EXPECT_EQ(copy.irPodStateOutputData()->state(), 1);  // copies are deep
}

TEST(StateRecordsText, Columns) {
    EXPECT_EQ(eodtest::headerLine(EngineStateOutputData()), "ENGINE_STATE");
    EXPECT_EQ(eodtest::headerLine(HeadTrackerStateOutputData()), "HT_STATE");
    EXPECT_EQ(eodtest::headerLine(IRPodStateOutputData()),
              "IR_STATE\tIR_POS_X\tIR_POS_y\tIR_POS_X");
    EXPECT_EQ(eodtest::valueLine(samplePod()), "1\t0.5\t-1.25\t2");
    // Children follow the parent's own column, in object id order.
    EXPECT_EQ(eodtest::headerLine(sampleEngineState()),
              "ENGINE_STATE\tHT_STATE\tIR_STATE\tIR_POS_X\tIR_POS_y\tIR_POS_X");
    EXPECT_EQ(eodtest::valueLine(sampleEngineState()), "1\t3\t1\t0.5\t-1.25\t2");
}

TEST(StateRecordsBadInput, EveryPrefixAndShortenedDataIsRefused) {
    for (const Bytes& bytes : {encode(sampleEngineState()), encode(EngineStateOutputData()),
                               encode(HeadTrackerStateOutputData(2)), encode(samplePod())}) {
        SCOPED_TRACE("object id " + std::to_string(bytes[0]));
        eodtest::expectEveryTruncationRejected(bytes);
        eodtest::expectByteFlipsSurvived(bytes);
    }
    for (char id :
         {EngineStateOutputData::THIS_OBJECT_ID, HeadTrackerStateOutputData::THIS_OBJECT_ID,
          IRPodStateOutputData::THIS_OBJECT_ID}) {
        SCOPED_TRACE(int(id));
        eodtest::expectGarbageSurvived(id, 2000u + static_cast<unsigned>(id));
    }
}
