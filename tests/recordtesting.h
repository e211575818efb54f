#ifndef EOD_TESTS_RECORDTESTING_H
#define EOD_TESTS_RECORDTESTING_H

// The checks the tests repeat, one function per job: encoding and decoding a record and
// building wire bytes by hand, refusing every truncation, surviving garbage and flipped bytes,
// the texts of thrown errors (usage errors, SerializableError), and the printed text lines.
// The record classes made for tests are in testrecord.h.

#include <algorithm>
#include <cstddef>
#include <exception>
#include <initializer_list>
#include <memory>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include <boost/pointer_cast.hpp>
#include <boost/shared_ptr.hpp>
#include <gtest/gtest.h>

#include <eod/gazeoutputdata.h>
#include <eod/serializable.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

namespace eodtest {

using Bytes = std::vector<unsigned char>;

// Status bits of the non-throwing readers, copied: the core's constants have no out-of-class
// definition that a gtest macro could bind a reference to.
const unsigned int UNKNOWN_ID = tq::eod::Serializable::STATUS_UNKNOWN_OBJECT_ID;
const unsigned int NOT_ENOUGH_DATA = tq::eod::Serializable::STATUS_NOT_ENOUGH_DATA;
const unsigned int UNDECODABLE = tq::eod::Serializable::STATUS_UNDECODABLE;

// ---- Encoding and decoding

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes bytes;
    record.serialize(bytes);
    return bytes;
}

// The parts one after the other.
inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A whole record as the wire has it: a header of `id` that announces `data`, then `data`.
inline Bytes recordBytes(char id, const Bytes& data) {
    Bytes bytes;
    tq::eod::Serializable::writeHeader(bytes, id, static_cast<unsigned int>(data.size()));
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

// A whole engine output record of `id` around its own data `specific`: the enabled flag
// before, no sub-records after.
inline Bytes engineRecordBytes(char id, const Bytes& specific) {
    return recordBytes(id, concat({{0x01}, specific, {0x00}}));
}

// Decodes one whole record into a fresh T with unSerialize: every byte must be consumed and
// the copy must encode to the same bytes.
template <class T>
T decodeAs(const Bytes& bytes) {
    T record;
    int pos = 0;
    EXPECT_TRUE(record.unSerialize(bytes, pos));
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(encode(record), bytes);
    return record;
}

// Decodes one whole record through the factory, which must build a T from the id in the
// bytes, consume every byte and give a copy that encodes to the same bytes. Null (and a
// failed test) when the factory built something else.
template <class T>
boost::shared_ptr<T> decodeViaFactory(const Bytes& bytes) {
    int pos = 0;
    const boost::shared_ptr<T> record =
        boost::dynamic_pointer_cast<T>(tq::eod::SerializableFactory::newObject(bytes, pos));
    EXPECT_TRUE(record) << "the factory did not build the expected class";
    EXPECT_EQ(pos, static_cast<int>(bytes.size()));
    if (record) {
        EXPECT_EQ(encode(*record), bytes);
    }
    return record;
}

// Both decodings above, as {unSerialize copy, factory copy} for field-by-field comparison;
// the second is a default T when the factory failed.
template <class T>
std::pair<T, T> decodeBothWays(const Bytes& bytes) {
    T direct = decodeAs<T>(bytes);
    const boost::shared_ptr<T> built = decodeViaFactory<T>(bytes);
    return {direct, built ? *built : T()};
}

// The record keeps every field when its bytes are decoded both ways and when it is copied
// (copy constructor, copyFrom, clone()); `expectSame(copy, original)` compares field by field
// (it may name an overloaded function: T comes from `original` alone).
template <class T>
void expectRoundTripsFieldForField(const T& original, void (*expectSame)(const std::decay_t<T>&,
                                                                         const std::decay_t<T>&)) {
    const std::pair<T, T> decoded = decodeBothWays<T>(encode(original));
    expectSame(decoded.first, original);
    expectSame(decoded.second, original);
    expectSame(T(original), original);
    T assigned;
    assigned.copyFrom(original);
    expectSame(assigned, original);
    const std::unique_ptr<T> cloned(original.clone());
    expectSame(*cloned, original);
}

// The protected own-data size of a record class.
template <class Record>
unsigned int engineSpecificDataBytes(const Record& record) {
    struct Probe : Record {
        using Record::numEngineSpecificDataBytes;
    };
    // A pointer to the base's member, reachable through the derived class's using-declaration.
    unsigned int (Record::*size)() const = &Probe::numEngineSpecificDataBytes;
    return (record.*size)();
}

// ---- Truncated and corrupt input

// Not `detail`: tests use tq::eod::detail unqualified next to this namespace.
namespace internal {

// `bytes` (one whole record) with its data cut to `keep` bytes under a header that announces
// exactly `keep`, so that the record's own reader meets the short data; `tail` follows.
inline Bytes withDataCutTo(const Bytes& bytes, unsigned int keep, const Bytes& tail = Bytes()) {
    int data_start = 1;
    EXPECT_TRUE(tq::eod::Serializable::readDataSizeHeader(bytes, data_start, nullptr));
    const auto data = bytes.begin() + data_start;
    return concat({recordBytes(static_cast<char>(bytes.at(0)), Bytes(data, data + keep)), tail});
}

// Calls check(prefix, false) for every proper prefix of `bytes`, and check(cut, true) for
// every data cut (withDataCutTo), bare and followed by trailing bytes that a reader must
// not take for its own.
template <class Check>
void forEveryTruncation(const Bytes& bytes, Check check) {
    int data_start = 1;
    unsigned int data_size = 0;
    ASSERT_TRUE(tq::eod::Serializable::readDataSizeHeader(bytes, data_start, &data_size));
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        SCOPED_TRACE("prefix of " + std::to_string(n) + " bytes");
        check(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n)), false);
    }
    const Bytes tail(40, 0x00);
    for (unsigned int keep = 0; keep < data_size; ++keep) {
        SCOPED_TRACE("data cut to " + std::to_string(keep) + " bytes");
        check(withDataCutTo(bytes, keep), true);
        SCOPED_TRACE("followed by zeros");
        check(withDataCutTo(bytes, keep, tail), true);
    }
}

}  // namespace internal

// Every truncation of a valid encoding is refused by the factory, never read as a record:
// a proper prefix is incomplete (status exactly bit 4); a data cut makes the reader fail
// (bit 8, or bit 4 from a child cut short; bit 1 may join them when a cut leaves a child's
// header on bytes that name no registered id). The read position stays, and the throwing form
// throws SerializableError.
inline void expectEveryTruncationRejected(const Bytes& bytes) {
    using tq::eod::SerializableFactory;
    internal::forEveryTruncation(bytes, [](const Bytes& input, bool data_cut) {
        int pos = 0;
        unsigned int status = 0;
        EXPECT_FALSE(SerializableFactory::newObjectWithStatus(input, pos, status));
        if (data_cut) {
            EXPECT_NE(status & (NOT_ENOUGH_DATA | UNDECODABLE), 0u) << "status " << status;
        } else {
            EXPECT_EQ(status, NOT_ENOUGH_DATA);
        }
        EXPECT_EQ(pos, 0);
        EXPECT_THROW(SerializableFactory::newObject(input, pos), tq::eod::SerializableError);
    });
}

// The same, and Record's own reader too: unSerialize returns false on a prefix and throws
// SerializableError on a data cut, without moving the read position; `check` inspects the
// record after every failed read (for instance, that it is still consistent).
template <class Record, class Check>
void expectEveryTruncationRejected(const Bytes& bytes, Check check) {
    expectEveryTruncationRejected(bytes);
    internal::forEveryTruncation(bytes, [&](const Bytes& input, bool data_cut) {
        Record record;
        int pos = 0;
        if (data_cut) {
            EXPECT_THROW(record.unSerialize(input, pos), tq::eod::SerializableError);
        } else {
            EXPECT_FALSE(record.unSerialize(input, pos));
        }
        EXPECT_EQ(pos, 0);
        check(record);
    });
}

template <class Record>
void expectEveryTruncationRejected(const Bytes& bytes) {
    expectEveryTruncationRejected<Record>(bytes, [](const Record&) {});
}

// Random data of up to `max_data` bytes under a valid header of `object_id`, followed by up
// to two stray bytes, `rounds` times (every other round with small counts up front, so that
// tables are sometimes read in full). A record that comes back has status 0, the id, exactly
// the announced bytes consumed, and prints; otherwise bit 4 or 8 is set. Never a crash.
inline void expectGarbageSurvived(char object_id, unsigned int seed, int rounds = 300,
                                  unsigned int max_data = 64) {
    using tq::eod::Serializable;
    std::mt19937 random(seed);
    for (int round = 0; round < rounds; ++round) {
        Bytes data(random() % max_data);
        for (unsigned char& b : data) b = static_cast<unsigned char>(random());
        if (data.size() > 4 && round % 2 == 0) data[1] = data[2] = data[3] = 0;
        Bytes bytes;
        Serializable::writeHeader(bytes, object_id, static_cast<unsigned int>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
        const int announced_end = static_cast<int>(bytes.size());
        for (unsigned int stray = random() % 3; stray > 0; --stray) {
            bytes.push_back(static_cast<unsigned char>(random()));
        }
        int pos = 0;
        unsigned int status = 0;
        const boost::shared_ptr<Serializable> record =
            tq::eod::SerializableFactory::newObjectWithStatus(bytes, pos, status);
        if (record) {
            EXPECT_EQ(status, 0u);
            EXPECT_EQ(record->objectID(), object_id);
            EXPECT_EQ(pos, announced_end);
            std::ostringstream line;
            tq::eod::GazeOutputData::setVergenceErrorsAsEmptyCells(line, true);
            record->printLine(line);
        } else {
            EXPECT_NE(status & (NOT_ENOUGH_DATA | UNDECODABLE), 0u) << "status " << status;
            EXPECT_EQ(pos, 0);
        }
    }
}

// Every byte of a valid encoding set to a few other values: never a crash, and a record
// that comes back has not read past the buffer.
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

// ---- Error texts

// what() of the E that `call` throws; records a failure (and gives "") when it throws nothing
// or another exception.
template <class E, class Call>
std::string thrownMessage(Call&& call) {
    try {
        call();
    } catch (const E& e) {
        return e.what();
    } catch (const std::exception& e) {
        ADD_FAILURE() << "expected " << typeid(E).name() << ", got " << typeid(e).name() << ": "
                      << e.what();
        return std::string();
    }
    ADD_FAILURE() << "expected " << typeid(E).name() << ", nothing was thrown";
    return std::string();
}

// The message of the SerializableError that `call` throws, as thrownMessage.
template <class Call>
std::string serializableError(Call&& call) {
    return thrownMessage<tq::eod::SerializableError>(std::forward<Call>(call));
}

// Passes when `text` is "eod\<module>.cpp:<line>: <reason>", the module path written with
// backslashes; `module` is the source path below eod/ without ".cpp", with either separator
// ("featurepoint", "io/tcpsocket").
inline ::testing::AssertionResult isUsageError(const std::string& text, const std::string& module,
                                               const std::string& reason) {
    std::string path = "eod/" + module + ".cpp";
    std::replace(path.begin(), path.end(), '/', '\\');
    std::smatch match;
    if (std::regex_match(text, match, std::regex("([^:]*):[0-9]+: (.*)")) && match[1] == path &&
        match[2] == reason) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "\"" << text << "\" is not \"" << path << ":<line>: " << reason << "\"";
}

// The statement throws std::invalid_argument "eod\<module>.cpp:<line>: <reason>".
#define EXPECT_USAGE_ERROR(statement, module, reason) \
    EXPECT_TRUE(::eodtest::isUsageError(              \
        ::eodtest::thrownMessage<std::invalid_argument>([&] { statement; }), module, reason))

// ---- Text output

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

// The tab-separated columns of a printed line.
inline std::vector<std::string> splitColumns(const std::string& line) {
    std::vector<std::string> columns;
    std::istringstream in(line);
    for (std::string column; std::getline(in, column, '\t');) columns.push_back(column);
    return columns;
}

}  // namespace eodtest

#endif
