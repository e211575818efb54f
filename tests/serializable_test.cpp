#include <gtest/gtest.h>

#include <eod/eod.h>

using namespace tq::eod;

TEST(EngineOutputData, NewFrameEncodesToNineBytes) {
    std::vector<unsigned char> buffer;
    EngineOutputData().serialize(buffer);
    EXPECT_EQ(buffer, (std::vector<unsigned char>{0x09, 0x00, 0x06, 0x01, 0, 0, 0, 0, 0x00}));
}
