#ifndef EOD_TESTS_TESTSUPPORT_H
#define EOD_TESTS_TESTSUPPORT_H

// Helpers shared by the test programs: exception checks, byte literals and temporary
// directories; the test record classes come with testrecord.h.

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <regex>
#include <string>
#include <typeinfo>
#include <vector>

#include <eod/serializable.h>
#include <eod/serializableerror.h>

#include "testrecord.h"

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
