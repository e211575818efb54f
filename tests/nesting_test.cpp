// Records read from bytes may nest only so deep: hostile bytes must not exhaust the stack.

#include <gtest/gtest.h>

#include <eod/engineoutputdata.h>
#include <eod/serializablefactory.h>

using namespace tq::eod;

namespace {

// Frames inside frames, `depth` levels in all, built straight as bytes (outermost first)
// so that neither the test nor the encoder recurses.
std::vector<unsigned char> nestedFrames(int depth) {
    std::vector<std::size_t> data_sizes(depth);
    std::size_t inner_total = 0;
    for (int level = depth - 1; level >= 0; --level) {
        data_sizes[level] = 6 + inner_total;  // flag, frame number, count, child
        inner_total = data_sizes[level] + (data_sizes[level] >= 65535 ? 7 : 3);
    }
    std::vector<unsigned char> bytes;
    bytes.reserve(inner_total);
    for (int level = 0; level < depth; ++level) {
        const std::size_t n = data_sizes[level];
        bytes.push_back(0x09);
        if (n >= 65535) {
            const unsigned char size[] = {0xFF, 0xFF, static_cast<unsigned char>(n >> 24),
                                          static_cast<unsigned char>(n >> 16),
                                          static_cast<unsigned char>(n >> 8),
                                          static_cast<unsigned char>(n)};
            bytes.insert(bytes.end(), size, size + sizeof size);
        } else {
            bytes.push_back(static_cast<unsigned char>(n >> 8));
            bytes.push_back(static_cast<unsigned char>(n));
        }
        const unsigned char own[] = {0x01, 0, 0, 0, 0, level + 1 < depth ? 1 : 0};
        bytes.insert(bytes.end(), own, own + sizeof own);
    }
    return bytes;
}

}  // namespace

TEST(Nesting, RealisticDepthsAreRead) {
    const std::vector<unsigned char> bytes = nestedFrames(32);
    int read_pos = 0;
    EXPECT_TRUE(SerializableFactory::newObject(bytes, read_pos));
    EXPECT_EQ(read_pos, static_cast<int>(bytes.size()));
}

TEST(Nesting, HostileDepthsAreRefusedNotFollowed) {
    const std::vector<unsigned char> bytes = nestedFrames(100000);
    int read_pos = 0;
    unsigned int status = 0;
    EXPECT_FALSE(SerializableFactory::newObjectWithStatus(bytes, read_pos, status));
    EXPECT_EQ(status & Serializable::STATUS_UNDECODABLE, Serializable::STATUS_UNDECODABLE);
    EXPECT_EQ(read_pos, 0);
    EXPECT_THROW(SerializableFactory::newObject(bytes, read_pos), SerializableError);

    EngineOutputData frame;
    read_pos = 0;
    EXPECT_THROW(frame.unSerialize(bytes, read_pos), SerializableError);
    // The guard unwinds with the exception: a realistic record still reads afterwards.
    const std::vector<unsigned char> fine = nestedFrames(3);
    read_pos = 0;
    EXPECT_TRUE(frame.unSerialize(fine, read_pos));
}
