#ifndef EOD_TOOLS_TOOLERROR_H
#define EOD_TOOLS_TOOLERROR_H

#include <stdexcept>
#include <string>

namespace eodtool {

// A runtime failure the command reports as one line on stderr and exit status 1. The
// text names the file or address and, where there is one, the library's message.
class ToolError : public std::runtime_error {
public:
    explicit ToolError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace eodtool

#endif
