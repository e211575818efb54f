// The registry's start-up registrations: exactly the library's 32 record classes, in the
// fixed order, each creating a record of its own id.

#include <gtest/gtest.h>

#include <typeinfo>

#include <boost/core/demangle.hpp>

#include <eod/eod.h>

#include "eod/detail/startupregistrations.h"

using namespace tq::eod;

TEST(StartupRegistrations, AreTheLibrarysRecordsInTheFixedOrder) {
    const std::vector<int> expected = {9,  40, 41, 42, 11, 16, 91, 93, 94, 15, 13,
                                       12, 14, 10, 19, 43, 18, 29, 44, 39, 17, 20,
                                       45, 30, 31, 32, 36, 34, 35, 92, 95, 96};
    std::vector<int> ids;
    for (const auto& registration : detail::startupRegistrations()) {
        ids.push_back(registration.object_id);
    }
    EXPECT_EQ(ids, expected);
}

TEST(StartupRegistrations, EveryIdCreatesARecordOfThatIdAndClass) {
    const struct {
        char id;
        const std::type_info& type;
    } table[] = {
        {9, typeid(EngineOutputData)},
        {40, typeid(EngineStateOutputData)},
        {41, typeid(HeadTrackerStateOutputData)},
        {42, typeid(IRPodStateOutputData)},
        {11, typeid(HeadOutputData)},
        {16, typeid(HeadOutputDataV2)},
        {91, typeid(FaceOutputData)},
        {93, typeid(FaceOutputDataV2)},
        {94, typeid(FaceSetOutputData)},
        {15, typeid(EyeOutputData)},
        {13, typeid(GazeOutputData)},
        {12, typeid(EyeClosureOutputData)},
        {14, typeid(PupilOutputData)},
        {10, typeid(TimingOutputData)},
        {19, typeid(WorldOutputData)},
        {43, typeid(WorldOutputDataV2)},
        {18, typeid(GazeIntersectionOutputDataV1)},
        {29, typeid(GazeIntersectionOutputDataV2)},
        {44, typeid(GazeIntersectionOutputDataV3)},
        {39, typeid(GazeIntersectionOutputDataV4)},
        {17, typeid(HeadIntersectionOutputDataV1)},
        {20, typeid(FeatureSetsByCamera)},
        {45, typeid(HeadIntersectionOutputDataV2)},
        {30, typeid(ImageCollectionOutputData)},
        {31, typeid(ImageOutputData)},
        {32, typeid(InertiaOutputData)},
        {36, typeid(CustomEventOutputData)},
        {34, typeid(GPSOutputData)},
        {35, typeid(GPSOutputDataV2)},
        {92, typeid(FaceTextureOutputData)},
        {95, typeid(CompressedSerializable)},
        {96, typeid(CompressedSerializableToken)},
    };
    for (const auto& entry : table) {
        SCOPED_TRACE(boost::core::demangle(entry.type.name()));
        const boost::shared_ptr<Serializable> record = SerializableFactory::newObject(entry.id);
        ASSERT_TRUE(record);
        const Serializable& r = *record;
        EXPECT_EQ(typeid(r), entry.type);
        EXPECT_EQ(record->objectID(), entry.id);
    }
    // The feature ids are known to their parents only.
    for (char id = 21; id <= 28; ++id) EXPECT_FALSE(SerializableFactory::newObject(id));
}
