#ifndef EOD_TESTS_RECORDCHECKS_H
#define EOD_TESTS_RECORDCHECKS_H

// Checks that every record test repeats: usage-error texts, encode/decode round trips
// directly and through the factory, own data sizes, text columns, and reading every
// truncation of a valid encoding.

#include <cctype>
#include <sstream>
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

// True when `text` is "eod/<module>.cpp:<line>: <reason>".
inline ::testing::AssertionResult isUsageErrorText(const std::string& text,
                                                   const std::string& module,
                                                   const std::string& reason) {
    const std::string prefix = "eod/" + module + ".cpp:";
    std::size_t pos = prefix.size();
    if (text.compare(0, prefix.size(), prefix) != 0) {
        return ::testing::AssertionFailure() << "wrong module in \"" << text << "\"";
    }
    const std::size_t digits = pos;
    while (pos < text.size() && std::isdigit(static_cast<unsigned char>(text[pos]))) ++pos;
    if (pos == digits || text.substr(pos) != ": " + reason) {
        return ::testing::AssertionFailure() << "\"" << text << "\" is not a usage error of "
                                             << module << " with \"" << reason << "\"";
    }
    return ::testing::AssertionSuccess();
}

// The statement must throw std::invalid_argument "eod/<module>.cpp:<line>: <reason>".
#define EXPECT_USAGE_ERROR(statement, module, reason)                              \
    do {                                                                           \
        try {                                                                      \
            statement;                                                             \
            ADD_FAILURE() << "no usage error from " #statement;                    \
        } catch (const std::invalid_argument& e) {                                 \
            EXPECT_TRUE(::eodtest::isUsageErrorText(e.what(), (module), (reason))); \
        }                                                                          \
    } while (false)

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes bytes;
    record.serialize(bytes);
    return bytes;
}

// Exposes the protected own-data size of a record class.
template <class Record>
unsigned int engineSpecificDataBytes(const Record& record) {
    struct Probe : Record {
        using Record::numEngineSpecificDataBytes;
    };
    // A pointer to the base's member, reachable through the derived class's using-declaration.
    unsigned int (Record::*size)() const = &Probe::numEngineSpecificDataBytes;
    return (record.*size)();
}

// Decodes `bytes` (one whole record) into a fresh Record with unSerialize, and once more
// through the factory, checks that both consumed every byte and re-encode to the same
// bytes, and returns the two copies for field-by-field comparison.
template <class Record>
std::pair<Record, Record> decodeBothWays(const Bytes& bytes) {
    Record direct;
    int pos = 0;
    EXPECT_TRUE(direct.unSerialize(bytes, pos));
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(encode(direct), bytes);

    pos = 0;
    boost::shared_ptr<Record> built =
        boost::dynamic_pointer_cast<Record>(tq::eod::SerializableFactory::newObject(bytes, pos));
    EXPECT_TRUE(built) << "the factory did not build the record's class";
    if (!built) return {direct, Record()};
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(encode(*built), bytes);
    return {direct, *built};
}

// The header line and the value line of a record, as printed.
inline std::string headerLine(const tq::eod::Serializable& record) {
    std::ostringstream os;
    record.printHeader(os);
    return os.str();
}

inline std::string valueLine(const tq::eod::Serializable& record) {
    std::ostringstream os;
    record.printLine(os);
    return os.str();
}

inline std::vector<std::string> splitColumns(const std::string& line) {
    std::vector<std::string> columns;
    std::istringstream in(line);
    for (std::string column; std::getline(in, column, '\t');) columns.push_back(column);
    return columns;
}

// Every proper prefix of a valid encoding: as it stands it is an incomplete record
// (unSerialize returns false, the factory sets bit 4); with its header rewritten to announce
// only the bytes present, the record's own reader meets the end (SerializableError; bit 8,
// or bit 4 from a child cut short).
// `check` runs on the record after each failed read.
template <class Record, class Check>
void expectEveryTruncationRejected(const Bytes& bytes, Check check) {
    using tq::eod::Serializable;
    using tq::eod::SerializableFactory;
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE("prefix of " + std::to_string(n) + " bytes");
        const Bytes prefix(bytes.begin(), bytes.begin() + n);
        Record record;
        int pos = 0;
        EXPECT_FALSE(record.unSerialize(prefix, pos));
        EXPECT_EQ(pos, 0);
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(prefix, pos, status));
        EXPECT_EQ(status, +Serializable::STATUS_NOT_ENOUGH_DATA);

        const std::size_t header = Serializable::minHeaderBytes();
        if (n < header) continue;
        Bytes relabelled;
        Serializable::writeHeader(relabelled, bytes[0], static_cast<unsigned int>(n - header));
        relabelled.insert(relabelled.end(), prefix.begin() + header, prefix.end());
        pos = 0;
        EXPECT_THROW(record.unSerialize(relabelled, pos), tq::eod::SerializableError);
        check(record);
        status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(relabelled, pos, status));
        // A leaf's reader fails (bit 8); a container may instead meet a child cut short (4).
        EXPECT_TRUE(status == Serializable::STATUS_UNDECODABLE ||
                    status == Serializable::STATUS_NOT_ENOUGH_DATA)
            << "status " << status;
        EXPECT_EQ(pos, 0);
    }
}

template <class Record>
void expectEveryTruncationRejected(const Bytes& bytes) {
    expectEveryTruncationRejected<Record>(bytes, [](const Record&) {});
}

}  // namespace eodtest

#endif
