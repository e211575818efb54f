#ifndef EOD_TESTS_RECORDTESTING_H
#define EOD_TESTS_RECORDTESTING_H

// Helpers shared by the record tests: encoding, and the two truncation sweeps every record
// reader must survive.

#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/pointer_cast.hpp>
#include <gtest/gtest.h>

#include <eod/serializable.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

namespace eodtest {

using Bytes = std::vector<unsigned char>;

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes bytes;
    record.serialize(bytes);
    return bytes;
}

// Decodes bytes into a record through the factory, which must build a T.
template <class T>
boost::shared_ptr<T> decodeViaFactory(const Bytes& bytes) {
    int pos = 0;
    boost::shared_ptr<T> record =
        boost::dynamic_pointer_cast<T>(tq::eod::SerializableFactory::newObject(bytes, pos));
    EXPECT_TRUE(record != nullptr);
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    return record;
}

inline std::size_t headerBytes(const Bytes& record) {
    return record.at(1) == 0xFF && record.at(2) == 0xFF ? 7 : 3;
}

// The record with its data cut to n bytes and a header that announces exactly n, so the
// record's own reader meets the short data.
inline Bytes withDataCutTo(const Bytes& record, std::size_t n) {
    Bytes cut;
    tq::eod::Serializable::writeHeader(cut, static_cast<char>(record[0]),
                                       static_cast<unsigned int>(n));
    const auto data = record.begin() + static_cast<std::ptrdiff_t>(headerBytes(record));
    cut.insert(cut.end(), data, data + static_cast<std::ptrdiff_t>(n));
    return cut;
}

// Every proper prefix of a valid encoding is refused as incomplete (status bit 4, or
// SerializableError from the throwing form); every shortened data part behind an honest
// header is refused as undecodable. Never a crash, never a record.
inline void expectEveryTruncationRejected(const Bytes& full) {
    using tq::eod::SerializableError;
    using tq::eod::SerializableFactory;
    for (std::size_t n = 0; n < full.size(); ++n) {
        SCOPED_TRACE("prefix of " + std::to_string(n) + " bytes");
        const Bytes prefix(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(n));
        unsigned int status = 0;
        int pos = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, pos, status));
        EXPECT_EQ(status, 4u);
        EXPECT_EQ(pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(prefix, pos), SerializableError);
    }
    const std::size_t data_bytes = full.size() - headerBytes(full);
    for (std::size_t n = 0; n < data_bytes; ++n) {
        SCOPED_TRACE("data cut to " + std::to_string(n) + " bytes");
        const Bytes cut = withDataCutTo(full, n);
        unsigned int status = 0;
        int pos = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(cut, pos, status));
        EXPECT_NE(status & 12u, 0u);
        EXPECT_EQ(pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(cut, pos), SerializableError);
    }
}

// The text of the usage error a call throws, or "" when it throws none.
template <class F>
std::string usageError(F&& call) {
    try {
        call();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "";
}

// True for "eod/<module>.cpp:<line>: <reason>".
inline bool isUsageError(const std::string& what, const std::string& module,
                         const std::string& reason) {
    std::smatch m;
    return std::regex_match(what, m, std::regex("eod/" + module + "\\.cpp:[0-9]+: (.*)")) &&
           m[1] == reason;
}

#define EXPECT_USAGE_ERROR(call, module, reason) \
    EXPECT_PRED3(::eodtest::isUsageError, ::eodtest::usageError([&] { call; }), module, reason)

}  // namespace eodtest

#endif
