// A frame's typed accessors, the face-set layout of head, face and eye records, and the
// start-up registrations.

#include <eod/customeventoutputdata.h>
#include <eod/engineoutputdata.h>
#include <eod/enginestateoutputdata.h>
#include <eod/eyeoutputdata.h>
#include <eod/faceoutputdatav2.h>
#include <eod/facesetoutputdata.h>
#include <eod/headoutputdatav2.h>
#include <eod/imagecollectionoutputdata.h>
#include <eod/featuresetsbycamera.h>
#include <eod/gpsoutputdata.h>
#include <eod/gpsoutputdatav2.h>
#include <eod/headtrackerstateoutputdata.h>
#include <eod/inertiaoutputdata.h>
#include <eod/irpodstateoutputdata.h>
#include <eod/timingoutputdata.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <typeinfo>

#include "recordtesting.h"

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

    const auto read = eodtest::decodeViaFactory<EngineOutputData>(eodtest::encode(frame));
    ASSERT_TRUE(read);
    const EngineOutputData& const_read = *read;
    ASSERT_TRUE(const_read.gpsOutputData());
    EXPECT_EQ(const_read.gpsOutputData()->speed(), 120);
    ASSERT_TRUE(const_read.gpsOutputDataV2());
    EXPECT_EQ(const_read.gpsOutputDataV2()->course(), 90.5f);
    EXPECT_FALSE(read->timingOutputData());
}


TEST(FrameAccessors, HeadFaceAndEyeComeFromTheFirstFaceSetBeforeTheFrame) {
    EngineOutputData frame;
    EXPECT_FALSE(frame.headOutputData());
    EXPECT_EQ(frame.numFaces(), 0);
    EXPECT_FALSE(frame.face(0));

    // Older layout: the head record directly in the frame.
    const auto direct = boost::make_shared<HeadOutputDataV2>();
    frame.addSubObject(direct);
    EXPECT_EQ(frame.headOutputData(), direct);

    // A face set's own head record takes precedence.
    const auto face_set = boost::make_shared<FaceSetOutputData>();
    const auto in_set = boost::make_shared<HeadOutputDataV2>();
    face_set->addSubObject(in_set);
    frame.addSubObject(face_set);
    EXPECT_EQ(frame.headOutputData(), in_set);
    EXPECT_EQ(headOutputData(frame), in_set);
    const EngineOutputData& const_frame = frame;
    EXPECT_EQ(const_frame.headOutputData(), in_set);

    const auto second = boost::make_shared<FaceSetOutputData>();
    frame.addSubObject(second);
    EXPECT_EQ(frame.numFaces(), 2);
    EXPECT_EQ(numFaceSetOutputDataObjects(frame), 2);
    EXPECT_EQ(frame.face(0), face_set);
    EXPECT_EQ(faceSetOutputData(frame, 1), second);
    EXPECT_FALSE(frame.face(2));
}

TEST(FrameAccessors, AddingHeadFaceOrEyeMovesTheFrameToTheFaceSetLayout) {
    EngineOutputData frame;
    const auto head = boost::make_shared<HeadOutputDataV2>();
    const auto eyes = boost::make_shared<EyeOutputData>();
    frame.addSubObject(head);
    frame.addSubObject(eyes);

    const auto face = addFaceOutputDataIfMissing(frame);
    ASSERT_EQ(frame.numFaces(), 1);
    const auto face_set = frame.face(0);
    EXPECT_EQ(face_set->headOutputData(), head);
    EXPECT_EQ(face_set->eyeOutputData(), eyes);
    EXPECT_EQ(face_set->faceOutputData(), face);
    EXPECT_FALSE(frame.hasSubObjectID(HeadOutputDataV2::THIS_OBJECT_ID));
    EXPECT_FALSE(frame.hasSubObjectID(EyeOutputData::THIS_OBJECT_ID));
    EXPECT_EQ(frame.numSubObjects(), 1);

    EXPECT_EQ(addHeadOutputDataIfMissing(frame), head);
    EXPECT_EQ(addEyeOutputDataIfMissing(frame), eyes);
    EXPECT_EQ(addFaceSetOutputDataIfMissing(frame), face_set);
    EXPECT_EQ(frame.numFaces(), 1);
}

TEST(FrameAccessors, ARecordOfTheWrongClassUnderAnIdIsAProgrammingError) {
    EngineOutputData frame;
    // A face set stored where the image collection belongs cannot be built from bytes,
    // but a frame assembled by hand can hold one through a subclass with another id.
    struct Impostor : FaceSetOutputData {
        char objectID() const override { return ImageCollectionOutputData::THIS_OBJECT_ID; }
        Impostor* clone() const override { return new Impostor(*this); }
    };
    frame.addSubObject(boost::make_shared<Impostor>());
    EXPECT_EQ(eodtest::serializableError([&] { frame.imagesOutputData(); }),
              "SerializableComposite::subObject() - programming error. ID does not match "
              "object type");
    EngineOutputData other;
    EXPECT_FALSE(imageCollectionOutputData(other));
    EXPECT_TRUE(addImageCollectionOutputDataIfMissing(other));
    EXPECT_EQ(addImageCollectionOutputDataIfMissing(other), other.imagesOutputData());
}
