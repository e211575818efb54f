// A frame's typed accessors for the timing, engine state, feature, inertia and GPS records.

#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/inertiaoutputdata.h>
#include <eod/timingoutputdata.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "recordchecks.h"

using namespace tq::eod;

TEST(FrameAccessors, AddIfMissingAddsOnceAndBothFormsAgree) {
    EngineOutputData frame;
    EXPECT_FALSE(frame.timingOutputData());
    EXPECT_FALSE(timingOutputData(frame));
    const auto added = addTimingOutputDataIfMissing(frame);
    ASSERT_TRUE(added);
    EXPECT_EQ(frame.timingOutputData(), added);
    EXPECT_EQ(timingOutputData(frame), added);
    EXPECT_EQ(addTimingOutputDataIfMissing(frame), added);
    EXPECT_EQ(frame.numSubObjects(), 1);

    const auto state = addEngineStateOutputDataIfMissing(frame);
    EXPECT_EQ(engineStateOutputData(frame), state);
    EXPECT_EQ(addEngineStateOutputDataIfMissing(frame), state);
    const auto sets = addFeatureSetsByCameraIfMissing(frame);
    EXPECT_EQ(featureSetsByCamera(frame), sets);
    EXPECT_EQ(addFeatureSetsByCameraIfMissing(frame), sets);
    const auto inertia = addInertiaOutputDataIfMissing(frame);
    EXPECT_EQ(inertiaOutputData(frame), inertia);
    EXPECT_EQ(addInertiaOutputDataIfMissing(frame), inertia);
    EXPECT_EQ(frame.numSubObjects(), 4);

    const EngineOutputData& const_frame = frame;
    EXPECT_EQ(const_frame.timingOutputData(), added);
    EXPECT_EQ(const_frame.engineStateOutputData(), state);
    EXPECT_EQ(const_frame.featureSetsByCamera(), sets);
    EXPECT_EQ(const_frame.inertiaOutputData(), inertia);
}

TEST(FrameAccessors, GPSRecordsComeBackWithTheFrame) {
    EngineOutputData frame;
    const EngineOutputData& const_frame = frame;
    EXPECT_FALSE(const_frame.gpsOutputData());
    EXPECT_FALSE(frame.gpsOutputDataV2());
    auto gps = boost::make_shared<GPSOutputData>();
    gps->setSpeed(120);
    auto gps2 = boost::make_shared<GPSOutputDataV2>();
    gps2->setCourse(90.5f);
    frame.addSubObject(gps);
    frame.addSubObject(gps2);
    EXPECT_EQ(frame.gpsOutputData(), gps);
    EXPECT_EQ(const_frame.gpsOutputDataV2(), gps2);

    const auto read = eodtest::viaFactory<EngineOutputData>(frame);
    ASSERT_TRUE(read);
    const EngineOutputData& const_read = *read;
    ASSERT_TRUE(const_read.gpsOutputData());
    EXPECT_EQ(const_read.gpsOutputData()->speed(), 120);
    ASSERT_TRUE(const_read.gpsOutputDataV2());
    EXPECT_EQ(const_read.gpsOutputDataV2()->course(), 90.5f);
    EXPECT_FALSE(read->timingOutputData());
}
