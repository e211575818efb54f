#ifndef EOD_TESTS_NETTESTHELPERS_H
#define EOD_TESTS_NETTESTHELPERS_H

// Helpers shared by the transport tests.

#include <gtest/gtest.h>

#include <cctype>
#include <stdexcept>
#include <string>

namespace nettest {

// The text of the std::invalid_argument that f throws; "no usage error" when it throws none.
template <class F>
std::string usageErrorText(F&& f) {
    try {
        f();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "no usage error";
}

// Passes when text reads "<module>:<line>: <reason>", as "eod/io/tcpsocket.cpp:12: x".
inline testing::AssertionResult isUsageError(const std::string& text, const std::string& module,
                                             const std::string& reason) {
    std::size_t p = module.size() + 1;
    bool ok = text.compare(0, p, module + ":") == 0 && p < text.size() &&
              std::isdigit(static_cast<unsigned char>(text[p]));
    while (ok && p < text.size() && std::isdigit(static_cast<unsigned char>(text[p]))) ++p;
    ok = ok && text.compare(p, std::string::npos, ": " + reason) == 0;
    if (ok) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "'" << text << "' is not '" << module << ":<line>: " << reason << "'";
}

}  // namespace nettest

#endif
