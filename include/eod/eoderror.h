#ifndef EOD_EODERROR_H
#define EOD_EODERROR_H

#include <stdexcept>
#include <string>

namespace tq {
namespace eod {

// Root of every error the library reports about data, files, sockets, serial ports and
// geometry. Abstract: only derived classes are thrown, and className() names the concrete
// one so that a catcher of EODError can say which kind of failure it met.
class EODError : public std::runtime_error {
public:
    EODError(const EODError&) = default;
    EODError& operator=(const EODError&) = default;
    ~EODError() override;

    virtual const char* className() const = 0;

protected:
    // The message is what what() returns, unchanged: never prefixed by the class name.
    explicit EODError(const std::string& message);
};

}  // namespace eod
}  // namespace tq

#endif
