// Feature leaves, feature sets and the per-camera container.

#include <eod/compressedserializable.h>
#include <eod/compressedserializabletoken.h>
#include <eod/engineoutputdata.h>
#include <eod/featurecircle.h>
#include <eod/featureline.h>
#include <eod/featurepoint.h>
#include <eod/featurerect.h>
#include <eod/featureset.h>
#include <eod/featuresetsbycamera.h>
#include <eod/timingoutputdata.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <cmath>
#include <limits>

#include "recordtesting.h"

using namespace tq::eod;
using eodtest::Bytes;
using eodtest::encode;
using eodtest::serializableError;

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();

// Values that distinguish the camera (c), the feature (f) and the coordinate.
float value(int c, int f, int i) { return 0.01f * static_cast<float>(c * 40 + f * 5 + i); }

boost::shared_ptr<FeatureSet> sampleSet(char set_id) {
    const int c = set_id - FeatureSet::FEATURE_SET_CAM_A_ID;
    auto set = boost::make_shared<FeatureSet>(set_id);
    for (char id : {FeaturePoint::RIGHT_PUPIL_ID, FeaturePoint::LEFT_PUPIL_ID}) {
        auto point = boost::make_shared<FeaturePoint>(id);
        point->setPosition(value(c, id - 20, 0), value(c, id - 20, 1));
        set->addSubObject(point);
    }
    for (char id : {FeatureRect::FACE_RECT_ID, FeatureRect::RIGHT_EYE_RECT_ID,
                    FeatureRect::LEFT_EYE_RECT_ID, FeatureRect::MOUTH_RECT_ID}) {
        auto rect = boost::make_shared<FeatureRect>(id);
        rect->setRect(value(c, id - 20, 0), value(c, id - 20, 1), value(c, id - 20, 2),
                      value(c, id - 20, 3));
        set->addSubObject(rect);
    }
    return set;
}

FeatureSetsByCamera sampleSets() {
    FeatureSetsByCamera sets;
    sets.addSubObject(sampleSet(FeatureSet::FEATURE_SET_CAM_B_ID));
    sets.addSubObject(sampleSet(FeatureSet::FEATURE_SET_CAM_A_ID));
    return sets;
}

void expectSampleSet(const FeatureSet& set, char set_id) {
    SCOPED_TRACE("set " + std::to_string(set_id));
    const int c = set_id - FeatureSet::FEATURE_SET_CAM_A_ID;
    EXPECT_EQ(set.objectID(), set_id);
    EXPECT_EQ(set.numSubObjects(), 6);
    for (char id : {FeaturePoint::RIGHT_PUPIL_ID, FeaturePoint::LEFT_PUPIL_ID}) {
        const auto point = set.pupilPosForEye(id == FeaturePoint::RIGHT_PUPIL_ID ? 0 : 1);
        ASSERT_TRUE(point);
        EXPECT_EQ(point->objectID(), id);
        EXPECT_EQ(point->name(), FeaturePoint::IDToName(id));
        EXPECT_EQ(point->x(), value(c, id - 20, 0));
        EXPECT_EQ(point->y(), value(c, id - 20, 1));
    }
    const boost::shared_ptr<FeatureRect const> rects[] = {set.faceRect(), set.rightEyeRect(),
                                                          set.leftEyeRect(), set.mouthRect()};
    char id = FeatureRect::FACE_RECT_ID;
    for (const auto& rect : rects) {
        ASSERT_TRUE(rect);
        EXPECT_EQ(rect->objectID(), id);
        EXPECT_EQ(rect->name(), FeatureRect::IDToName(id));
        EXPECT_EQ(rect->x(), value(c, id - 20, 0));
        EXPECT_EQ(rect->y(), value(c, id - 20, 1));
        EXPECT_EQ(rect->width(), value(c, id - 20, 2));
        EXPECT_EQ(rect->height(), value(c, id - 20, 3));
        ++id;
    }
}

void expectSampleSets(const FeatureSetsByCamera& sets) {
    EXPECT_EQ(sets.numSubObjects(), 2);
    ASSERT_TRUE(sets.featureSetForCamera(0));
    ASSERT_TRUE(sets.featureSetForCamera(1));
    expectSampleSet(*sets.featureSetForCamera(0), FeatureSet::FEATURE_SET_CAM_A_ID);
    expectSampleSet(*sets.featureSetForCamera(1), FeatureSet::FEATURE_SET_CAM_B_ID);
}

// An application's own feature kind under an id of its choosing.
const char kAppLineId = 60;
boost::shared_ptr<Serializable> createAppLine() {
    return boost::make_shared<FeatureLine>(kAppLineId);
}

}  // namespace

TEST(FeatureLeaves, NamesFromIds) {
    EXPECT_EQ(FeaturePoint::IDToName(23), "R_PUPILPOS");
    EXPECT_EQ(FeaturePoint::IDToName(24), "L_PUPILPOS");
    EXPECT_EQ(FeaturePoint::IDToName(25), "POINT");
    EXPECT_EQ(FeatureRect::IDToName(25), "FACERECT");
    EXPECT_EQ(FeatureRect::IDToName(26), "REYERECT");
    EXPECT_EQ(FeatureRect::IDToName(27), "LEYERECT");
    EXPECT_EQ(FeatureRect::IDToName(28), "MOUTRECT");
    EXPECT_EQ(FeatureRect::IDToName(29), "RECT");
    EXPECT_EQ(FeaturePoint(FeaturePoint::RIGHT_PUPIL_ID).name(), "R_PUPILPOS");
    EXPECT_EQ(FeatureRect(FeatureRect::MOUTH_RECT_ID).name(), "MOUTRECT");
    EXPECT_EQ(FeatureLine(70).name(), "LINE");
    EXPECT_EQ(FeatureCircle(71, "IRIS").name(), "IRIS");
}

TEST(FeatureLeaves, IdsPerInstanceAndFixedSizes) {
    const FeaturePoint point(24);
    const FeatureLine line(70);
    const FeatureCircle circle(71);
    const FeatureRect rect(99);
    EXPECT_EQ(point.objectID(), 24);
    EXPECT_EQ(line.objectID(), 70);
    EXPECT_EQ(circle.objectID(), 71);
    EXPECT_EQ(rect.objectID(), 99);
    EXPECT_EQ(point.numDataBytes(), 8u);
    EXPECT_EQ(line.numDataBytes(), 16u);
    EXPECT_EQ(circle.numDataBytes(), 12u);
    EXPECT_EQ(rect.numDataBytes(), 16u);
    EXPECT_EQ(encode(circle).size(), 15u);
    EXPECT_EQ(FeatureOutputData::invalidValue(), -1.0f);
    EXPECT_EQ(point.x(), -1.0f);
    EXPECT_EQ(line.y2(), -1.0f);
    EXPECT_EQ(circle.radius(), -1.0f);
    EXPECT_EQ(rect.height(), -1.0f);
}

TEST(FeatureLeaves, PointBytesAndRoundTrip) {
    FeaturePoint point(FeaturePoint::LEFT_PUPIL_ID);
    point.setPosition(0.5f, 0.25f);
    const Bytes bytes = encode(point);
    EXPECT_EQ(bytes, (Bytes{24, 0x00, 0x08, 0x3F, 0x00, 0x00, 0x00, 0x3E, 0x80, 0x00, 0x00}));
    FeaturePoint read(FeaturePoint::LEFT_PUPIL_ID);
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    EXPECT_EQ(pos, 11);
    EXPECT_EQ(read.x(), 0.5f);
    EXPECT_EQ(read.y(), 0.25f);
}

TEST(FeatureLeaves, LineCircleRectRoundTrip) {
    FeatureLine line(70);
    line.setEndPoints(0.0f, 1.0f, -1.0f, 0.75f);
    FeatureLine line_read(70);
    Bytes bytes = encode(line);
    int pos = 0;
    ASSERT_TRUE(line_read.unSerialize(bytes, pos));
    EXPECT_EQ(line_read.x1(), 0.0f);
    EXPECT_EQ(line_read.y1(), 1.0f);
    EXPECT_EQ(line_read.x2(), -1.0f);
    EXPECT_EQ(line_read.y2(), 0.75f);

    FeatureCircle circle(71);
    circle.setGeometry(0.5f, 0.5f, 1.0f);
    FeatureCircle circle_read(71);
    bytes = encode(circle);
    pos = 0;
    ASSERT_TRUE(circle_read.unSerialize(bytes, pos));
    EXPECT_EQ(circle_read.x(), 0.5f);
    EXPECT_EQ(circle_read.y(), 0.5f);
    EXPECT_EQ(circle_read.radius(), 1.0f);

    FeatureRect rect(FeatureRect::FACE_RECT_ID);
    rect.setRect(-5.0f, 2.0f, 300.0f, kNaN);  // rectangles store without a check
    FeatureRect rect_read(FeatureRect::FACE_RECT_ID);
    bytes = encode(rect);
    pos = 0;
    ASSERT_TRUE(rect_read.unSerialize(bytes, pos));
    EXPECT_EQ(rect_read.x(), -5.0f);
    EXPECT_EQ(rect_read.y(), 2.0f);
    EXPECT_EQ(rect_read.width(), 300.0f);
    EXPECT_TRUE(std::isnan(rect_read.height()));
}

TEST(FeatureLeaves, ValueChecksNameTheFirstBadArgument) {
    const float bad_values[] = {-0.5f, 1.5f, -1.0001f, 1.0001f, kNaN};
    for (float bad : bad_values) {
        SCOPED_TRACE(bad);
        FeaturePoint point(23);
        point.setPosition(0.5f, 0.5f);
        EXPECT_USAGE_ERROR(point.setPosition(bad, 0.5f), "featurepoint", "x is not a valid value");
        EXPECT_USAGE_ERROR(point.setPosition(0.2f, bad), "featurepoint", "y is not a valid value");
        EXPECT_USAGE_ERROR(point.setPosition(bad, bad), "featurepoint", "x is not a valid value");
        EXPECT_EQ(point.x(), 0.5f);
        EXPECT_EQ(point.y(), 0.5f);

        FeatureLine line(70);
        const char* names[] = {"x1", "y1", "x2", "y2"};
        for (int i = 0; i < 4; ++i) {
            float v[4] = {0.1f, 0.2f, 0.3f, 0.4f};
            v[i] = bad;
            EXPECT_USAGE_ERROR(line.setEndPoints(v[0], v[1], v[2], v[3]), "featureline",
                               std::string(names[i]) + " is not a valid value");
        }
        EXPECT_EQ(line.x1(), -1.0f);

        FeatureCircle circle(71);
        const char* circle_names[] = {"x", "y", "radius"};
        for (int i = 0; i < 3; ++i) {
            float v[3] = {0.1f, 0.2f, 0.3f};
            v[i] = bad;
            EXPECT_USAGE_ERROR(
                circle.setGeometry(v[0], v[1], v[2]), "featurecircle",
                std::string(circle_names[i]) + " not invalidValue() and outside the range 0..1");
        }
        EXPECT_EQ(circle.radius(), -1.0f);
    }
}

TEST(FeatureLeaves, InvalidValueAndBothEndsAreAccepted) {
    FeaturePoint point(23);
    point.setPosition(-1.0f, 0.5f);
    EXPECT_EQ(point.x(), -1.0f);
    point.setPosition(0.0f, 1.0f);
    EXPECT_EQ(point.y(), 1.0f);
    FeatureCircle circle(71);
    circle.setGeometry(0.5f, 0.5f, 1.0f);
    EXPECT_EQ(circle.radius(), 1.0f);
    FeatureLine line(70);
    line.setEndPoints(-1.0f, 0.0f, 1.0f, -1.0f);
    EXPECT_EQ(line.x2(), 1.0f);
}

TEST(FeatureLeaves, AssignmentCopiesValuesAndKeepsIdentity) {
    FeaturePoint left(FeaturePoint::LEFT_PUPIL_ID);
    left.setPosition(0.5f, 0.5f);
    FeaturePoint right(FeaturePoint::RIGHT_PUPIL_ID);
    right = left;
    EXPECT_EQ(right.objectID(), FeaturePoint::RIGHT_PUPIL_ID);
    EXPECT_EQ(right.name(), "R_PUPILPOS");
    EXPECT_EQ(right.x(), 0.5f);
    const boost::shared_ptr<FeaturePoint> copy(left.clone());
    EXPECT_EQ(copy->objectID(), FeaturePoint::LEFT_PUPIL_ID);
    EXPECT_EQ(copy->name(), "L_PUPILPOS");
    EXPECT_EQ(copy->y(), 0.5f);

    // Through the base, a feature of another kind has other values: none are taken over.
    FeatureRect rect(FeatureRect::FACE_RECT_ID);
    rect.setRect(0.1f, 0.2f, 0.3f, 0.4f);
    static_cast<FeatureOutputData&>(rect) = left;
    EXPECT_EQ(eodtest::valueLine(rect), "0.1	0.2	0.3	0.4");
    EXPECT_EQ(rect.numDataBytes(), 16u);
}

TEST(FeatureLeavesText, ColumnsAreNamePlusSuffix) {
    FeaturePoint point(FeaturePoint::RIGHT_PUPIL_ID);
    point.setPosition(0.5f, -1.0f);
    EXPECT_EQ(eodtest::headerLine(point), "R_PUPILPOS_X\tR_PUPILPOS_Y");
    EXPECT_EQ(eodtest::valueLine(point), "0.5\t-1");
    EXPECT_EQ(eodtest::headerLine(FeatureLine(70)), "LINE_X1\tLINE_Y1\tLINE_X2\tLINE_Y2");
    EXPECT_EQ(eodtest::headerLine(FeatureCircle(71, "IRIS")), "IRIS_X\tIRIS_Y\tIRIS_RADIUS");
    FeatureRect rect(FeatureRect::FACE_RECT_ID);
    rect.setName("FACE");
    EXPECT_EQ(eodtest::headerLine(rect), "FACE_X\tFACE_Y\tFACE_WIDTH\tFACE_HEIGHT");
    EXPECT_EQ(eodtest::valueLine(rect), "-1\t-1\t-1\t-1");
}

TEST(FeatureLeavesBadInput, ShortDataIsRefused) {
    FeatureLine line(70);
    line.setEndPoints(0.1f, 0.2f, 0.3f, 0.4f);
    const Bytes bytes = encode(line);
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE(n);
        const Bytes prefix(bytes.begin(), bytes.begin() + static_cast<long>(n));
        int pos = 0;
        EXPECT_FALSE(FeatureLine(70).unSerialize(prefix, pos));
        EXPECT_EQ(pos, 0);
    }
    // The header rewritten to announce only the data left: the reader runs out.
    for (std::size_t keep = 0; keep < line.numDataBytes(); ++keep) {
        SCOPED_TRACE(keep);
        Bytes cut;
        Serializable::writeHeader(cut, 70, static_cast<unsigned>(keep));
        cut.insert(cut.end(), bytes.begin() + 3, bytes.begin() + 3 + static_cast<long>(keep));
        int pos = 0;
        EXPECT_THROW(FeatureLine(70).unSerialize(cut, pos), SerializableError);
        unsigned int status = 0;
        FeatureLine(70).unSerializeWithStatus(cut, pos, status);
        EXPECT_EQ(status, +Serializable::STATUS_UNDECODABLE);
        EXPECT_EQ(pos, 0);
    }
}

TEST(FeatureSets, TypedAccessors) {
    FeatureSet set(FeatureSet::FEATURE_SET_CAM_A_ID);
    EXPECT_EQ(set.objectID(), 21);
    EXPECT_FALSE(set.faceRect());
    EXPECT_FALSE(set.pupilPosForEye(RIGHT_EYE));
    auto pupil = boost::make_shared<FeaturePoint>(FeaturePoint::LEFT_PUPIL_ID);
    set.addSubObject(pupil);
    EXPECT_EQ(set.leftPupilPos(), pupil);
    EXPECT_EQ(set.pupilPosForEye(LEFT_EYE), pupil);
    EXPECT_FALSE(set.rightPupilPos());
    const FeatureSet& const_set = set;
    EXPECT_EQ(const_set.pupilPosForEye(LEFT_EYE), pupil);
    for (int eye : {-1, 2, 3}) {
        SCOPED_TRACE(eye);
        EXPECT_USAGE_ERROR(set.pupilPosForEye(eye), "featureset",
                           "eye_id neither LEFT_EYE nor RIGHT_EYE");
        EXPECT_USAGE_ERROR(const_set.pupilPosForEye(eye), "featureset",
                           "eye_id neither LEFT_EYE nor RIGHT_EYE");
    }
}

TEST(FeatureSets, WhatASetAccepts) {
    FeatureSet set(FeatureSet::FEATURE_SET_CAM_B_ID);
    set.addSubObject(boost::make_shared<FeatureRect>(FeatureRect::MOUTH_RECT_ID));
    set.addSubObject(boost::make_shared<FeatureLine>(70));
    set.addSubObject(boost::make_shared<FeatureCircle>(71));
    set.addSubObject(boost::make_shared<CompressedSerializableToken>(5));
    EXPECT_EQ(set.numSubObjects(), 4);

    EXPECT_EQ(
        serializableError([&] { set.addSubObject(boost::make_shared<CompressedSerializable>()); }),
        "EngineOutputBase::addSubObject - object not derived from EngineOutputBase");
    const boost::shared_ptr<Serializable> misplaced[] = {
        boost::make_shared<FeatureLine>(FeatureRect::FACE_RECT_ID),
        boost::make_shared<FeatureCircle>(FeaturePoint::RIGHT_PUPIL_ID),
        boost::make_shared<FeatureRect>(FeaturePoint::LEFT_PUPIL_ID),
        boost::make_shared<FeaturePoint>(FeatureSet::FEATURE_SET_CAM_A_ID),
        boost::make_shared<FeatureSet>(FeatureRect::LEFT_EYE_RECT_ID)};
    for (const auto& record : misplaced) {
        SCOPED_TRACE(int(record->objectID()));
        EXPECT_EQ(serializableError([&] { set.addSubObject(record); }),
                  "FeatureSet::addSubObject - object id reserved for another feature class");
    }
    EXPECT_EQ(set.numSubObjects(), 4);
    // A second record of the same feature is refused as in every composite.
    EXPECT_THROW(set.addSubObject(boost::make_shared<FeatureRect>(FeatureRect::MOUTH_RECT_ID)),
                 SerializableError);
}

TEST(FeatureSets, ContainerAcceptsSetsOnlyUnderSetIds) {
    FeatureSetsByCamera sets;
    EXPECT_EQ(serializableError([&] {
                  sets.addSubObject(boost::make_shared<FeatureSet>(FeatureRect::FACE_RECT_ID));
              }),
              "FeatureSetsByCamera::addSubObject - object id reserved for another feature class");
    EXPECT_THROW(sets.addSubObject(boost::make_shared<FeaturePoint>(30)), SerializableError);
    sets.addSubObject(boost::make_shared<FeatureSet>(FeatureSet::FEATURE_SET_CAM_A_ID));
    EXPECT_EQ(sets.numSubObjects(), 1);
}

TEST(FeatureSets, CameraNumbers) {
    FeatureSetsByCamera sets = sampleSets();
    EXPECT_EQ(sets.featureSetForCamera(0)->objectID(), FeatureSet::FEATURE_SET_CAM_A_ID);
    EXPECT_EQ(sets.featureSetForCamera(1)->objectID(), FeatureSet::FEATURE_SET_CAM_B_ID);
    const FeatureSetsByCamera& const_sets = sets;
    EXPECT_EQ(const_sets.featureSetForCamera(1), sets.featureSetForCamera(1));
    for (int camera : {-1, 2, 21}) {
        SCOPED_TRACE(camera);
        EXPECT_USAGE_ERROR(sets.featureSetForCamera(camera), "featuresetsbycamera",
                           "invalid camera id");
        EXPECT_USAGE_ERROR(const_sets.featureSetForCamera(camera), "featuresetsbycamera",
                           "invalid camera id");
    }
    EXPECT_FALSE(FeatureSetsByCamera().featureSetForCamera(0));
}

TEST(FeatureSets, EmptyContainersEncodeFlagAndCount) {
    EXPECT_EQ(encode(FeatureSetsByCamera()), (Bytes{20, 0x00, 0x02, 0x01, 0x00}));
    EXPECT_EQ(encode(FeatureSet(22)), (Bytes{22, 0x00, 0x02, 0x01, 0x00}));
}

TEST(FeatureSetsRoundTrip, ThroughUnSerialize) {
    const Bytes bytes = encode(sampleSets());
    FeatureSetsByCamera read;
    int pos = 0;
    ASSERT_TRUE(read.unSerialize(bytes, pos));
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    expectSampleSets(read);
    EXPECT_EQ(encode(read), bytes);

    FeatureSetsByCamera read_with_status;
    pos = 0;
    unsigned int status = 0;
    read_with_status.unSerializeWithStatus(bytes, pos, status);
    EXPECT_EQ(status, 0u);
    expectSampleSets(read_with_status);
}

TEST(FeatureSetsRoundTrip, ThroughTheFactoryAndInAFrame) {
    const auto read = eodtest::decodeViaFactory<FeatureSetsByCamera>(encode(sampleSets()));
    ASSERT_TRUE(read);
    expectSampleSets(*read);

    EngineOutputData frame;
    frame.setFrameNum(7);
    frame.addSubObject(boost::make_shared<FeatureSetsByCamera>(sampleSets()));
    frame.addSubObject(boost::make_shared<TimingOutputData>());
    const auto frame_read = eodtest::decodeViaFactory<EngineOutputData>(encode(frame));
    ASSERT_TRUE(frame_read);
    const auto sets = frame_read->typedSubObject<FeatureSetsByCamera>(20);
    ASSERT_TRUE(sets);
    expectSampleSets(*sets);
    EXPECT_TRUE(frame_read->hasSubObjectID(TimingOutputData::THIS_OBJECT_ID));
}

TEST(FeatureSetsRoundTrip, OtherChildrenGoThroughTheFactory) {
    FeatureSetsByCamera sets = sampleSets();
    const auto set = sets.featureSetForCamera(0);
    auto line = boost::make_shared<FeatureLine>(kAppLineId);
    line->setEndPoints(0.1f, 0.2f, 0.3f, 0.4f);
    set->addSubObject(line);
    set->addSubObject(boost::make_shared<CompressedSerializableToken>(9));
    const Bytes bytes = encode(sets);

    // Unregistered id: the line is skipped whole, the rest still comes back.
    unsigned int status = 0;
    int pos = 0;
    const auto without_line = boost::dynamic_pointer_cast<FeatureSetsByCamera>(
        SerializableFactory::newObjectWithStatus(bytes, pos, status));
    ASSERT_TRUE(without_line);
    EXPECT_EQ(status, +Serializable::STATUS_UNKNOWN_OBJECT_ID);
    const auto read_set = without_line->featureSetForCamera(0);
    EXPECT_FALSE(read_set->hasSubObjectID(kAppLineId));
    EXPECT_TRUE(read_set->hasSubObjectID(CompressedSerializableToken::THIS_OBJECT_ID));
    EXPECT_EQ(read_set->numSubObjects(), 7);
    expectSampleSet(*without_line->featureSetForCamera(1), FeatureSet::FEATURE_SET_CAM_B_ID);

    // Registered by the application: the line comes back.
    SerializableFactory::registerObjectType(kAppLineId, &createAppLine);
    const auto with_line = eodtest::decodeViaFactory<FeatureSetsByCamera>(encode(sets));
    SerializableFactory::unregisterObjectType(kAppLineId);
    ASSERT_TRUE(with_line);
    const auto read_line =
        with_line->featureSetForCamera(0)->typedSubObject<FeatureLine>(kAppLineId);
    ASSERT_TRUE(read_line);
    EXPECT_EQ(read_line->y2(), 0.4f);
}

TEST(FeatureSetsRoundTrip, SwitchedOffFeaturesStayInMemoryOnly) {
    FeatureSetsByCamera sets = sampleSets();
    sets.featureSetForCamera(1)->setSerializeEnabled(false);
    const auto read = eodtest::decodeViaFactory<FeatureSetsByCamera>(encode(sets));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->featureSetForCamera(0));
    EXPECT_FALSE(read->featureSetForCamera(1));
}

TEST(FeatureSetsText, ColumnsPerSet) {
    FeatureSetsByCamera sets;
    auto set = boost::make_shared<FeatureSet>(FeatureSet::FEATURE_SET_CAM_B_ID);
    auto pupil = boost::make_shared<FeaturePoint>(FeaturePoint::RIGHT_PUPIL_ID);
    pupil->setPosition(0.5f, 0.25f);
    set->addSubObject(pupil);
    sets.addSubObject(set);
    EXPECT_EQ(eodtest::headerLine(sets), "FEATURE_SET_ID\tR_PUPILPOS_X\tR_PUPILPOS_Y");
    EXPECT_EQ(eodtest::valueLine(sets), "22\t0.5\t0.25");
}

TEST(FeatureSetsBadInput, TruncatedAndCorruptContainers) {
    EngineOutputData frame;
    frame.addSubObject(boost::make_shared<FeatureSetsByCamera>(sampleSets()));
    for (const Bytes& bytes : {encode(sampleSets()), encode(frame)}) {
        SCOPED_TRACE("object id " + std::to_string(bytes[0]));
        eodtest::expectEveryTruncationRejected(bytes);
        eodtest::expectByteFlipsSurvived(bytes);
    }
    eodtest::expectGarbageSurvived(FeatureSetsByCamera::THIS_OBJECT_ID, 20u);
}

TEST(FeatureSetsBadInput, PlainReaderThrowsSerializableErrorOnly) {
    // The plain path builds the feature children itself: each cut must surface as a
    // SerializableError (or an incomplete record), never as anything else.
    eodtest::expectEveryTruncationRejected<FeatureSetsByCamera>(encode(sampleSets()));
}
