#ifndef EOD_TESTS_RECORDTEST_H
#define EOD_TESTS_RECORDTEST_H

// Checks shared by the record tests: encode, decode back through unSerialize and through
// the factory, and feed every truncation of an encoding to the readers.

#include <eod/serializable.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <gtest/gtest.h>

#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace recordtest {

using Bytes = std::vector<unsigned char>;

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes bytes;
    record.serialize(bytes);
    return bytes;
}

// Decodes into a new T; the whole encoding must be consumed and encode to the same bytes.
template <class T>
T decodeAs(const Bytes& bytes) {
    T record;
    int pos = 0;
    EXPECT_TRUE(record.unSerialize(bytes, pos));
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(encode(record), bytes);
    return record;
}

// Decodes through the factory, which must build a T from the id in the bytes.
template <class T>
boost::shared_ptr<T> decodeThroughFactory(const Bytes& bytes) {
    int pos = 0;
    boost::shared_ptr<T> record =
        boost::dynamic_pointer_cast<T>(tq::eod::SerializableFactory::newObject(bytes, pos));
    EXPECT_TRUE(record);
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    if (record) {
        EXPECT_EQ(encode(*record), bytes);
    }
    return record;
}

// Every prefix of the encoding is an incomplete record (bit 4, position kept), and every
// prefix of the data under a header that announces just that prefix makes the record's
// reader run out: an error or a status bit, never a crash.
inline void expectEveryTruncationFails(const Bytes& bytes) {
    using tq::eod::Serializable;
    using tq::eod::SerializableFactory;
    // Copied: the core's status constants have no out-of-class definition to bind to.
    const unsigned int not_enough = Serializable::STATUS_NOT_ENOUGH_DATA;
    const unsigned int undecodable = Serializable::STATUS_UNDECODABLE;
    ASSERT_GE(bytes.size(), Serializable::minHeaderBytes());
    const char id = static_cast<char>(bytes[0]);
    int data_start = 1;
    unsigned int data_size = 0;
    ASSERT_TRUE(Serializable::readDataSizeHeader(bytes, data_start, &data_size));

    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE(::testing::Message() << "prefix of " << n << " bytes");
        const Bytes prefix(bytes.begin(), bytes.begin() + n);
        int pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, pos, status));
        EXPECT_EQ(status, not_enough);
        EXPECT_EQ(pos, 0);
    }
    for (unsigned int n = 0; n < data_size; ++n) {
        SCOPED_TRACE(::testing::Message() << "data cut to " << n << " bytes");
        Bytes cut;
        Serializable::writeHeader(cut, id, n);
        cut.insert(cut.end(), bytes.begin() + data_start, bytes.begin() + data_start + n);
        int pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(cut, pos, status));
        EXPECT_NE(status & (not_enough | undecodable), 0u);
        EXPECT_THROW(SerializableFactory::newObject(cut, pos), tq::eod::SerializableError);
    }
}

// Runs f and expects std::invalid_argument whose text matches the pattern.
template <class F>
void expectUsageError(F f, const std::string& pattern) {
    try {
        f();
        ADD_FAILURE() << "no exception, expected " << pattern;
    } catch (const std::invalid_argument& e) {
        EXPECT_TRUE(std::regex_match(e.what(), std::regex(pattern))) << e.what();
    }
}

// Runs f and expects SerializableError with exactly this message.
template <class F>
void expectSerializableError(F f, const std::string& message) {
    try {
        f();
        ADD_FAILURE() << "no exception, expected " << message;
    } catch (const tq::eod::SerializableError& e) {
        EXPECT_EQ(std::string(e.what()), message);
    }
}

}  // namespace recordtest

#endif
