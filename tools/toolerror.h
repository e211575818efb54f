#ifndef EOD_TOOLS_TOOLERROR_H
#define EOD_TOOLS_TOOLERROR_H

#include <stdexcept>
#include <string>
#include <utility>

#include <eod/eoderror.h>

namespace eodtool {

// A runtime failure the command reports as one line on stderr and exit status 1. The
// text names the file or address and, where there is one, the library's message.
class ToolError : public std::runtime_error {
public:
    explicit ToolError(const std::string& message) : std::runtime_error(message) {}
};

// Runs `work`; a library error it throws comes out as ToolError "<where>: <message>" (the
// message alone when `where` is empty, for messages that name their file themselves).
template <class Work>
auto orToolError(const std::string& where, Work&& work) -> decltype(work()) {
    try {
        return std::forward<Work>(work)();
    } catch (const tq::eod::EODError& e) {
        throw ToolError(where.empty() ? std::string(e.what()) : where + ": " + e.what());
    }
}

}  // namespace eodtool

#endif
