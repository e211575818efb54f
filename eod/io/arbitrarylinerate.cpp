#include "eod/io/detail/arbitrarylinerate.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>

// <sys/ioctl.h> drags in the C library's termios types, which clash with the kernel's.
extern "C" int ioctl(int fd, unsigned long request, ...);

namespace tq {
namespace eod {
namespace io {
namespace detail {

int setArbitraryLineRate(int fd, unsigned int bits_per_second) {
    termios2 line;
    if (ioctl(fd, TCGETS2, &line) != 0) {
        return errno;
    }
    line.c_cflag &= ~(CBAUD | (CBAUD << IBSHIFT));
    line.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    line.c_ispeed = bits_per_second;
    line.c_ospeed = bits_per_second;
    return ioctl(fd, TCSETS2, &line) == 0 ? 0 : errno;
}

}  // namespace detail
}  // namespace io
}  // namespace eod
}  // namespace tq
