#include <gtest/gtest.h>

#include <stdexcept>

#include <eod/eod.h>

#include "eod/detail/usageerror.h"
#include "recordtesting.h"

using namespace tq::eod;
using namespace eodtest;

namespace {

TEST(UsageError, MessageIsModuleLineAndReason) {
    const Bytes bytes = encode(EngineOutputData());
    EngineOutputData frame;
    int read_pos = -4;
    const std::string message =
        thrownMessage<std::invalid_argument>([&] { frame.unSerialize(bytes, read_pos); });
    EXPECT_TRUE(isUsageError(message, "serializable", "negative read_pos"));
    EXPECT_EQ(read_pos, -4);
}

// The module path is written with backslashes, nested folders included.
TEST(UsageError, MacrosNameThisFileAndLineWithBackslashes) {
    const int line = __LINE__ + 1;
    const auto fail = [] { EOD_USAGE_ERROR("reason text"); };
    EXPECT_EQ(thrownMessage<std::invalid_argument>(fail),
              "tests\\usageerror_test.cpp:" + std::to_string(line) + ": reason text");
    EXPECT_NO_THROW(EOD_REQUIRE(1 + 1 == 2, "arithmetic"));
    const auto require = [] { EOD_REQUIRE(1 + 1 == 3, "arithmetic"); };
    EXPECT_EQ(
        thrownMessage<std::invalid_argument>(require).rfind("tests\\usageerror_test.cpp:", 0), 0u);
    EXPECT_USAGE_ERROR(utils::unitVector({0.0f, 0.0f, 0.0f}), "utils/geomutils",
                       "direction has zero length");
    EXPECT_TRUE(isUsageError("eod\\utils\\geomutils.cpp:7: r", "utils/geomutils", "r"));
    EXPECT_FALSE(isUsageError("eod/utils/geomutils.cpp:7: r", "utils/geomutils", "r"));
}

TEST(UsageError, IsNeitherALibraryErrorNorARuntimeError) {
    bool caught_as_logic_error = false;
    try {
        EngineOutputBase::eyeIdName(EyeId(7));
    } catch (const EODError&) {
        ADD_FAILURE() << "caught as EODError";
    } catch (const std::runtime_error&) {
        ADD_FAILURE() << "caught as runtime_error";
    } catch (const std::logic_error&) {
        caught_as_logic_error = true;
    }
    EXPECT_TRUE(caught_as_logic_error);
}

TEST(SerializableError, MessageAndClassName) {
    const SerializableError e("abc");
    EXPECT_STREQ(e.what(), "abc");
    EXPECT_STREQ(e.className(), "SerializableError");
    const SerializableError copy(e);
    EXPECT_STREQ(copy.what(), "abc");
    SerializableError assigned("x");
    assigned = e;
    EXPECT_STREQ(assigned.what(), "abc");

    try {
        throw SerializableError("thrown");
    } catch (const EODError& caught) {
        EXPECT_STREQ(caught.what(), "thrown");
        EXPECT_STREQ(caught.className(), "SerializableError");
    }
    EXPECT_THROW(throw SerializableError("r"), std::runtime_error);
}

}  // namespace
