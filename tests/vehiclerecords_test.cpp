// Timing, inertia, GPS and custom event records.

#include <eod/customeventoutputdata.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/inertiaoutputdata.h>
#include <eod/timingoutputdata.h>
#include <gtest/gtest.h>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;

namespace {

TimingOutputData sampleTiming() {
    TimingOutputData t;
    t.setExperimentTime(1234.5);
    t.setFrameTimeSeconds(-7);
    t.setFrameTimeMilliseconds(999);
    t.setApproxDelay(0.25f);
    t.setAnnotationLabelID(42);
    return t;
}

InertiaOutputData sampleInertia() {
    InertiaOutputData i;
    i.setAngularRateX(1.5f);
    i.setAngularRateY(-2.5f);
    i.setAngularRateZ(3.25f);
    i.setAccelX(-9.81f);
    i.setAccelY(0.125f);
    i.setAccelZ(1e-3f);
    return i;
}

GPSOutputData sampleGPS() {
    GPSOutputData g;
    g.setDataValid(true);
    g.setGMTTime(0xA1B2C3D4u);
    g.setLatitude({-33, 52, 9, 'S'});  // degrees, minutes, seconds, hemisphere
    g.setLongitude({151, 12, 30, 'E'});
    g.setSpeed(88);
    return g;
}

GPSOutputDataV2 sampleGPSV2() {
    GPSOutputDataV2 g;
    g.setDataValid(true);
    g.setGMTTime(123456u);
    g.setLatitude({48, 8, 14.75f, 'N'});
    g.setLongitude({11, 34, 59.5f, 'W'});
    g.setSpeed(97.5f);
    g.setCourse(271.25f);
    return g;
}

CustomEventOutputData sampleEvents() {
    CustomEventOutputData e;
    e.setFlags(0x80000005u, 0);
    return e;
}

// Data size of an engine record with no children: flag byte, own fields, count byte.
unsigned int recordDataSize(unsigned int own_bytes) { return own_bytes + 2; }

}  // namespace

TEST(VehicleRecords, OwnDataSizesAreFixed) {
    EXPECT_EQ(encode(TimingOutputData()).size(), 3 + recordDataSize(22));
    EXPECT_EQ(encode(InertiaOutputData()).size(), 3 + recordDataSize(24));
    EXPECT_EQ(encode(GPSOutputData()).size(), 3 + recordDataSize(17));
    EXPECT_EQ(encode(GPSOutputDataV2()).size(), 3 + recordDataSize(29));
    EXPECT_EQ(encode(CustomEventOutputData()).size(), 3 + recordDataSize(4));
    EXPECT_EQ(encode(sampleGPSV2()).size(), 3 + recordDataSize(29));
}

TEST(VehicleRecords, DefaultGPSBytesCarrySpeedMinusOneAndNorthernHemispheres) {
    const Bytes expected = {34,   0x00, 0x13,             // header: 19 data bytes
                            0x01,                         // serialise-enabled flag
                            0x00,                         // not valid
                            0x00, 0x00, 0x00, 0x00,       // GMT time
                            0x00, 0x00, 0x00, 0x00, 'N',  // latitude
                            0x00, 0x00, 0x00, 0x00, 'N',  // longitude
                            0xFF, 0xFF,                   // speed -1
                            0x00};                        // no children
    EXPECT_EQ(encode(GPSOutputData()), expected);
}

TEST(VehicleRecords, GPSFieldsTravelInOrderBigEndian) {
    const Bytes bytes = encode(sampleGPS());
    const Bytes data(bytes.begin() + 4, bytes.end() - 1);
    const Bytes expected = {0x01, 0xA1, 0xB2, 0xC3, 0xD4, 0xFF, 0xDF, 52,  9,
                            'S',  0x00, 0x97, 12,   30,   'E',  0x00, 0x58};
    EXPECT_EQ(data, expected);
}

TEST(VehicleRecords, GPSV2CoordinateSecondsAreFloats) {
    const Bytes bytes = encode(sampleGPSV2());
    // latitude: degrees 00 30, minutes 08, seconds 14.75f = 41 6C 00 00, 'N'
    const Bytes latitude(bytes.begin() + 9, bytes.begin() + 17);
    EXPECT_EQ(latitude, (Bytes{0x00, 0x30, 0x08, 0x41, 0x6C, 0x00, 0x00, 'N'}));
}

TEST(VehicleRecords, TimingBytes) {
    const Bytes bytes = encode(sampleTiming());
    const Bytes data(bytes.begin() + 4, bytes.end() - 1);
    const Bytes expected = {0x40, 0x93, 0x4A, 0x00, 0x00, 0x00, 0x00, 0x00,  // 1234.5
                            0xFF, 0xFF, 0xFF, 0xF9,                          // -7
                            0x03, 0xE7,                                      // 999
                            0x3E, 0x80, 0x00, 0x00,                          // 0.25f
                            0x00, 0x00, 0x00, 0x2A};                         // 42
    EXPECT_EQ(data, expected);
}

TEST(VehicleRecords, DefaultsMatchTheDesign) {
    const TimingOutputData t;
    EXPECT_EQ(t.experimentTime(), 0.0);
    EXPECT_EQ(t.frameTimeSecs(), 0);
    EXPECT_EQ(t.frameTimeMSecs(), 0);
    EXPECT_EQ(t.approxDelay(), 0.0f);
    EXPECT_EQ(t.annotationLabelID(), -1);
    const GPSOutputDataV2 g;
    EXPECT_FALSE(g.isDataValid());
    EXPECT_EQ(g.speed(), 0.0f);
    EXPECT_EQ(g.course(), 0.0f);
    EXPECT_EQ(g.latitude(), GPSCoordinateV2());
    EXPECT_EQ(g.longitude().hemisphere, 'N');
    EXPECT_EQ(GPSOutputData().speed(), -1);
    EXPECT_EQ(CustomEventOutputData().flags(), 0u);
}

TEST(VehicleRecords, TimingRoundTripsFieldForField) {
    const auto read = eodtest::decodeViaFactory<TimingOutputData>(encode(sampleTiming()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->experimentTime(), 1234.5);
    EXPECT_EQ(read->frameTimeSecs(), -7);
    EXPECT_EQ(read->frameTimeMSecs(), 999);
    EXPECT_EQ(read->approxDelay(), 0.25f);
    EXPECT_EQ(read->annotationLabelID(), 42);
}

TEST(VehicleRecords, InertiaRoundTripsFieldForField) {
    const auto read = eodtest::decodeViaFactory<InertiaOutputData>(encode(sampleInertia()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->angularRateX(), 1.5f);
    EXPECT_EQ(read->angularRateY(), -2.5f);
    EXPECT_EQ(read->angularRateZ(), 3.25f);
    EXPECT_EQ(read->accelX(), -9.81f);
    EXPECT_EQ(read->accelY(), 0.125f);
    EXPECT_EQ(read->accelZ(), 1e-3f);
}

TEST(VehicleRecords, GPSRoundTripsFieldForField) {
    const GPSOutputData original = sampleGPS();
    const auto read = eodtest::decodeViaFactory<GPSOutputData>(encode(original));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isDataValid());
    EXPECT_EQ(read->gmtTime(), 0xA1B2C3D4u);
    EXPECT_EQ(read->latitude(), original.latitude());
    EXPECT_EQ(read->longitude(), original.longitude());
    EXPECT_EQ(read->speed(), 88);
}

TEST(VehicleRecords, GPSV2RoundTripsFieldForField) {
    const GPSOutputDataV2 original = sampleGPSV2();
    const auto read = eodtest::decodeViaFactory<GPSOutputDataV2>(encode(original));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isDataValid());
    EXPECT_EQ(read->gmtTime(), 123456u);
    EXPECT_EQ(read->latitude(), original.latitude());
    EXPECT_EQ(read->longitude(), original.longitude());
    EXPECT_EQ(read->speed(), 97.5f);
    EXPECT_EQ(read->course(), 271.25f);
}

TEST(VehicleRecords, CustomEventsRoundTrip) {
    const auto read = eodtest::decodeViaFactory<CustomEventOutputData>(encode(sampleEvents()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->flags(), 0x80000005u);
}

TEST(VehicleRecords, CopiesAreIndependent) {
    GPSOutputData original = sampleGPS();
    const boost::shared_ptr<GPSOutputData> copy(original.clone());
    original.setSpeed(1);
    EXPECT_EQ(copy->speed(), 88);
    TimingOutputData assigned;
    assigned.copyFrom(sampleTiming());
    EXPECT_EQ(encode(assigned), encode(sampleTiming()));
}

TEST(CustomEventFlags, FlagAlgebra) {
    CustomEventOutputData e;
    e.setFlag(31, true);
    EXPECT_EQ(e.flags(), 0x80000000u);
    EXPECT_TRUE(e.isSet(31));
    EXPECT_FALSE(e.isSet(30));

    e.setFlags(5, 0xFFFFFFFFu);  // adds bits 0 and 2, keeps the rest
    EXPECT_EQ(e.flags(), 0x80000005u);
    EXPECT_TRUE(e.isSet(0));
    EXPECT_FALSE(e.isSet(1));
    EXPECT_TRUE(e.isSet(2));

    e.setFlag(0, false);
    EXPECT_EQ(e.flags(), 0x80000004u);
    e.setFlag(2, true);  // already set: unchanged
    EXPECT_EQ(e.flags(), 0x80000004u);

    e.setFlags(0x10u, 0x80000000u);  // keeps only the top bit, then adds bit 4
    EXPECT_EQ(e.flags(), 0x80000010u);

    e.setFlags(0, 0);
    EXPECT_EQ(e.flags(), 0u);
}

TEST(CustomEventFlags, EveryBitIsItsOwn) {
    for (int bit = 0; bit < 32; ++bit) {
        SCOPED_TRACE(bit);
        CustomEventOutputData e;
        e.setFlag(bit, true);
        EXPECT_EQ(e.flags(), 1u << bit);
        for (int other = 0; other < 32; ++other) EXPECT_EQ(e.isSet(other), other == bit);
        e.setFlags(0xFFFFFFFFu, 0);
        e.setFlag(bit, false);
        EXPECT_EQ(e.flags(), ~(1u << bit));
    }
}

TEST(CustomEventFlags, BitNumbersOutsideTheWordNameNoFlag) {
    CustomEventOutputData e;
    e.setFlags(0x12345678u, 0);
    for (int bit : {-1, 32, 33, 1000}) {
        SCOPED_TRACE(bit);
        e.setFlag(bit, true);
        e.setFlag(bit, false);
        EXPECT_EQ(e.flags(), 0x12345678u);
        EXPECT_FALSE(e.isSet(bit));
    }
}

TEST(VehicleRecordsText, ColumnLabelsAndValues) {
    EXPECT_EQ(eodtest::headerLine(TimingOutputData()),
              "EXPERIMENT_TIME\tGMT_S\tGMT_MS\tDELAY\tANNOTATION_ID");
    EXPECT_EQ(eodtest::valueLine(TimingOutputData()), "0\t0\t0\t0\t-1");
    EXPECT_EQ(eodtest::headerLine(InertiaOutputData()),
              "X_ANG_RATE\tY_ANG_RATE\tZ_ANG_RATE\tX_ACCEL\tY_ACCEL\tZ_ACCEL");
    EXPECT_EQ(eodtest::valueLine(sampleInertia()), "1.5\t-2.5\t3.25\t-9.81\t0.125\t0.001");
    const std::string gps_labels =
        "GPS_VALID\tGPS_GMT_TIME\tGPS_LATITUDE_DEG\tGPS_LATITUDE_MIN\tGPS_LATITUDE_SEC\t"
        "GPS_LATITUDE_HEM\tGPS_LONGITUDE_DEG\tGPS_LONGITUDE_MIN\tGPS_LONGITUDE_SEC\t"
        "GPS_LONGITUDE_HEM\tGPS_SPEED_KM_H";
    EXPECT_EQ(eodtest::headerLine(GPSOutputData()), gps_labels);
    EXPECT_EQ(eodtest::valueLine(sampleGPS()), "1\t2712847316\t-33\t52\t9\tS\t151\t12\t30\tE\t88");
    EXPECT_EQ(eodtest::headerLine(GPSOutputDataV2()), gps_labels + "\tGPS_COURSE");
    EXPECT_EQ(eodtest::valueLine(sampleGPSV2()),
              "1\t123456\t48\t8\t14.75\tN\t11\t34\t59.5\tW\t97.5\t271.25");
}

TEST(VehicleRecordsText, CustomEventsPrintThirtyTwoBits) {
    std::string labels;
    std::string values;
    for (int bit = 0; bit < 32; ++bit) {
        if (bit > 0) {
            labels += '\t';
            values += '\t';
        }
        labels += "BIT" + std::to_string(bit);
        values += bit == 0 || bit == 2 || bit == 31 ? '1' : '0';
    }
    EXPECT_EQ(eodtest::headerLine(CustomEventOutputData()), labels);
    EXPECT_EQ(eodtest::valueLine(sampleEvents()), values);
}

TEST(VehicleRecordsBadInput, EveryPrefixAndShortenedDataIsRefused) {
    for (const Bytes& bytes : {encode(sampleTiming()), encode(sampleInertia()), encode(sampleGPS()),
                               encode(sampleGPSV2()), encode(sampleEvents())}) {
        SCOPED_TRACE("object id " + std::to_string(bytes[0]));
        eodtest::expectEveryTruncationRejected(bytes);
        eodtest::expectByteFlipsSurvived(bytes);
    }
}

TEST(VehicleRecordsBadInput, GarbageIsSurvived) {
    for (char id : {TimingOutputData::THIS_OBJECT_ID, InertiaOutputData::THIS_OBJECT_ID,
                    GPSOutputData::THIS_OBJECT_ID, GPSOutputDataV2::THIS_OBJECT_ID,
                    CustomEventOutputData::THIS_OBJECT_ID}) {
        SCOPED_TRACE(int(id));
        eodtest::expectGarbageSurvived(id, 1000u + static_cast<unsigned>(id));
    }
}
