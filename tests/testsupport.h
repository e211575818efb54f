#ifndef EOD_TESTS_TESTSUPPORT_H
#define EOD_TESTS_TESTSUPPORT_H

// Helpers shared by the test programs: exception checks, byte literals, small record classes
// for the tests (the real record classes are built elsewhere), scoped registrations and
// temporary directories.

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <regex>
#include <string>
#include <typeinfo>
#include <vector>

#include <eod/engineoutputbase.h>
#include <eod/serializable.h>
#include <eod/serializablecomposite.h>
#include <eod/serializableerror.h>
#include <eod/serializablefactory.h>

#include "eod/bytecodec.h"
#include "eod/textcolumns.h"

namespace eodtest {

using Bytes = std::vector<unsigned char>;

// what() of the E that f throws; records a failure when f throws nothing or something else.
template <class E, class F>
std::string thrownMessage(F&& f) {
    try {
        f();
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

template <class F>
std::string serializableError(F&& f) {
    return thrownMessage<tq::eod::SerializableError>(std::forward<F>(f));
}

// Usage errors read "eod/<module>.cpp:<line>: <reason>", nothing more.
inline ::testing::AssertionResult isUsageError(const std::string& message,
                                               const std::string& module,
                                               const std::string& reason) {
    static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
    const auto escape = [](const std::string& s) {
        return std::regex_replace(s, special, R"(\$&)");
    };
    const std::regex pattern("^eod/" + escape(module) + R"(\.cpp:[0-9]+: )" + escape(reason) + "$");
    if (std::regex_match(message, pattern)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "\"" << message << "\" is not a usage error of eod/"
                                         << module << ".cpp with \"" << reason << "\"";
}

template <class F>
::testing::AssertionResult throwsUsageError(F&& f, const std::string& module,
                                            const std::string& reason) {
    return isUsageError(thrownMessage<std::invalid_argument>(std::forward<F>(f)), module, reason);
}

inline Bytes encode(const tq::eod::Serializable& record) {
    Bytes b;
    record.serialize(b);
    return b;
}

inline Bytes concat(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes header(char id, unsigned int data_size) {
    Bytes b;
    tq::eod::Serializable::writeHeader(b, id, data_size);
    return b;
}

// A plain leaf record whose data bytes are given. Its reader takes as many bytes as it holds
// (less `shortfall`), which is how tests make a reader disagree with the header.
class TestLeaf : public tq::eod::Serializable {
public:
    static constexpr char THIS_OBJECT_ID = 100;

    explicit TestLeaf(char id = 100, Bytes data = Bytes()) : _id(id), _data(std::move(data)) {}

    char objectID() const override { return _id; }
    unsigned int numDataBytes() const override { return static_cast<unsigned int>(_data.size()); }
    bool serializeEnabled() const override { return _enabled; }
    TestLeaf* clone() const override { return new TestLeaf(*this); }
    void printLine(std::ostream& os) const override {
        tq::eod::detail::TextLine line(os);
        tq::eod::detail::Columns(os) << _data.size();
    }
    void printHeader(std::ostream& os) const override {
        tq::eod::detail::TextLine line(os);
        tq::eod::detail::Columns(os) << "LEAF_BYTES";
    }
    bool forbidDuplicateSiblings() const override { return _forbid_siblings; }

    const Bytes& data() const { return _data; }
    void setEnabled(bool enabled) { _enabled = enabled; }
    void setForbidSiblings(bool forbid) { _forbid_siblings = forbid; }
    void setShortfall(std::size_t n) { _shortfall = n; }

    // The field routines that record classes use, opened up for the codec tests.
    using Serializable::appendBuffer;
    using Serializable::appendRawBytes;
    using Serializable::readBuffer;
    using Serializable::readRawBytes;

protected:
    void appendBuffer(Bytes& buffer) const override {
        tq::eod::detail::appendRaw(buffer, _data.data(), _data.size());
    }
    void readFromBuffer(const Bytes& buffer, int& read_pos) override {
        tq::eod::detail::readRaw(buffer, read_pos, _data.data(), _data.size() - _shortfall);
    }

private:
    char _id;
    Bytes _data;
    bool _enabled = true;
    bool _forbid_siblings = true;
    std::size_t _shortfall = 0;
};

// An engine output record with one 4-byte field, under any id the test needs.
template <char ID, bool ALLOW_SIBLINGS = false>
class TestRecord : public tq::eod::EngineOutputBase {
public:
    static constexpr char THIS_OBJECT_ID = ID;

    explicit TestRecord(int value = 0) : _value(value) {}

    char objectID() const override { return ID; }
    TestRecord* clone() const override { return new TestRecord(*this); }
    bool forbidDuplicateSiblings() const override { return !ALLOW_SIBLINGS; }

    int value() const { return _value; }
    void setValue(int value) { _value = value; }

    void printOwnHeader(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << "VALUE_" + std::to_string(int(ID));
    }
    void printOwnData(std::ostream& os) const override { tq::eod::detail::Columns(os) << _value; }

protected:
    void appendEngineSpecificData(Bytes& buffer) const override {
        tq::eod::detail::appendNumber(buffer, _value);
    }
    void readEngineSpecificData(const Bytes& buffer, int& read_pos) override {
        _value = tq::eod::detail::readNumber<int>(buffer, read_pos);
    }
    unsigned int numEngineSpecificDataBytes() const override { return 4; }

private:
    int _value;
};

// A plain composite (no own fields) whose duplicate policy the test chooses.
class TestComposite : public tq::eod::SerializableComposite {
public:
    static constexpr char THIS_OBJECT_ID = 110;

    explicit TestComposite(bool allow_duplicates = true) : _allow_duplicates(allow_duplicates) {}

    char objectID() const override { return THIS_OBJECT_ID; }
    TestComposite* clone() const override { return new TestComposite(*this); }
    void printOwnHeader(std::ostream& os) const override {
        tq::eod::detail::Columns(os) << "COMPOSITE";
    }
    void printOwnData(std::ostream& os) const override { tq::eod::detail::Columns(os) << "c"; }

protected:
    bool allowDuplicateSubObjects() const override { return _allow_duplicates; }

private:
    bool _allow_duplicates;
};

template <class T>
boost::shared_ptr<tq::eod::Serializable> create() {
    return boost::shared_ptr<tq::eod::Serializable>(new T());
}

// Registers T under its id for the life of the scope and restores what was there before.
template <class T>
class ScopedRegistration {
public:
    ScopedRegistration()
        : _previous(
              tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, &create<T>)) {}
    ~ScopedRegistration() {
        tq::eod::SerializableFactory::unregisterObjectType(T::THIS_OBJECT_ID);
        if (_previous) {
            tq::eod::SerializableFactory::registerObjectType(T::THIS_OBJECT_ID, _previous);
        }
    }
    ScopedRegistration(const ScopedRegistration&) = delete;
    ScopedRegistration& operator=(const ScopedRegistration&) = delete;

private:
    tq::eod::SerializableFactory::CreationFunction _previous;
};

// A fresh directory, removed with its contents at the end of the scope.
class TempDir {
public:
    TempDir() {
        static std::atomic<int> counter{0};
        _path = std::filesystem::temp_directory_path() /
                ("eod-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(_path);
        std::filesystem::create_directories(_path);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return _path; }
    std::string file(const std::string& name) const { return (_path / name).string(); }

private:
    std::filesystem::path _path;
};

}  // namespace eodtest

#endif
