#ifndef EOD_IO_DETAIL_ARBITRARYLINERATE_H
#define EOD_IO_DETAIL_ARBITRARYLINERATE_H

namespace tq {
namespace eod {
namespace io {
namespace detail {

// Sets both line rates of the terminal `fd` to any number of bits per second through the
// kernel's termios2 interface, for rates that have no B-constant. Returns 0 or errno. It
// lives in a file of its own because the kernel's termios2 header cannot share a
// translation unit with <termios.h>.
int setArbitraryLineRate(int fd, unsigned int bits_per_second);

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq

#endif
