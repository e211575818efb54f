#ifndef EOD_TESTS_RECORDCHECKS_B_H
#define EOD_TESTS_RECORDCHECKS_B_H

// Checks shared by the record tests: byte round trips through the factory and the
// behaviour of every reader on cut-short and garbage input.

#include <eod/serializable.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>
#include <gtest/gtest.h>

#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace eodtest {

using Bytes = std::vector<unsigned char>;

inline Bytes bytesOf(const tq::eod::Serializable& record) {
    Bytes buffer;
    record.serialize(buffer);
    return buffer;
}

inline std::string headerOf(const tq::eod::Serializable& record) {
    std::ostringstream os;
    record.printHeader(os);
    return os.str();
}

inline std::string lineOf(const tq::eod::Serializable& record) {
    std::ostringstream os;
    record.printLine(os);
    return os.str();
}

// The record read back through the factory as a T; fails the test when it does not come
// back whole, of the same class, with identical bytes on re-encoding.
template <class T>
boost::shared_ptr<T> viaFactory(const tq::eod::Serializable& record) {
    const Bytes bytes = bytesOf(record);
    int pos = 0;
    boost::shared_ptr<T> read =
        boost::dynamic_pointer_cast<T>(tq::eod::SerializableFactory::newObject(bytes, pos));
    EXPECT_TRUE(read) << "record did not come back as the expected class";
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    if (read) {
        EXPECT_EQ(bytesOf(*read), bytes);
    }
    return read;
}

// Every strict prefix of a record's encoding is refused: the status form sets bit 4 or 8
// and returns null without moving read_pos; the plain form throws SerializableError.
inline void expectEveryPrefixRefused(const Bytes& bytes) {
    using tq::eod::Serializable;
    using tq::eod::SerializableFactory;
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE("prefix of " + std::to_string(n) + " bytes");
        const Bytes prefix(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n));
        int pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, pos, status));
        EXPECT_NE(
            status & (Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE), 0u);
        EXPECT_EQ(pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(prefix, pos), tq::eod::SerializableError);
    }
}

// A record whose header announces fewer data bytes than its reader needs (its data cut
// after `keep` bytes and the size field rewritten to match), optionally followed by
// `tail`: every such record is refused as undecodable or incomplete, never read as valid.
inline void expectEveryShortenedDataRefused(const Bytes& bytes, const Bytes& tail = Bytes()) {
    using tq::eod::Serializable;
    using tq::eod::SerializableFactory;
    ASSERT_GE(bytes.size(), 3u);
    const std::size_t data_size = bytes.size() - 3;  // records under test use short headers
    for (std::size_t keep = 0; keep < data_size; ++keep) {
        SCOPED_TRACE("data cut to " + std::to_string(keep) + " bytes");
        Bytes cut;
        Serializable::writeHeader(cut, static_cast<char>(bytes[0]), static_cast<unsigned>(keep));
        cut.insert(cut.end(), bytes.begin() + 3, bytes.begin() + 3 + static_cast<long>(keep));
        cut.insert(cut.end(), tail.begin(), tail.end());
        int pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(cut, pos, status));
        EXPECT_NE(
            status & (Serializable::STATUS_NOT_ENOUGH_DATA | Serializable::STATUS_UNDECODABLE), 0u);
        EXPECT_EQ(pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(cut, pos), tq::eod::SerializableError);
    }
}

// Random data bytes under the given id: whatever comes back, nothing crashes, and a record
// that is returned has consumed exactly what its header announced.
inline void expectGarbageSurvived(char object_id, unsigned int seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        const std::size_t size = random() % 64;
        Bytes buffer;
        tq::eod::Serializable::writeHeader(buffer, object_id, static_cast<unsigned>(size));
        for (std::size_t i = 0; i < size; ++i)
            buffer.push_back(static_cast<unsigned char>(random()));
        int pos = 0;
        unsigned int status = 0;
        const boost::shared_ptr<tq::eod::Serializable> read =
            tq::eod::SerializableFactory::newObjectWithStatus(buffer, pos, status);
        if (read) {
            EXPECT_EQ(pos, static_cast<int>(buffer.size()));
        }
    }
}

// Flips every byte of a valid encoding to a few other values: no crash, and a record that
// is returned has consumed exactly what its header announced.
inline void expectByteFlipsSurvived(const Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (unsigned char value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            Bytes corrupt = bytes;
            corrupt[i] = value;
            int pos = 0;
            unsigned int status = 0;
            const boost::shared_ptr<tq::eod::Serializable> read =
                tq::eod::SerializableFactory::newObjectWithStatus(corrupt, pos, status);
            if (read) {
                EXPECT_LE(pos, static_cast<int>(corrupt.size()));
            }
        }
    }
}

// `call` throws std::invalid_argument "eod/<module>.cpp:<line>: <reason>".
template <class Call>
void expectUsageError(Call call, const std::string& module, const std::string& reason) {
    try {
        call();
        ADD_FAILURE() << "no exception; expected \"" << reason << "\"";
    } catch (const std::invalid_argument& e) {
        // Module names are lower-case letters and digits: nothing to escape.
        const std::string text = e.what();
        std::smatch match;
        ASSERT_TRUE(
            std::regex_match(text, match, std::regex("eod/" + module + "\\.cpp:[0-9]+: (.*)")))
            << text;
        EXPECT_EQ(match[1].str(), reason);
    }
}

}  // namespace eodtest

#endif
