#ifndef EOD_DETAIL_ALIGNEDALLOC_H
#define EOD_DETAIL_ALIGNEDALLOC_H

// The platform's aligned heap, kept behind two calls so that the image records never name
// it. Memory from alignedAlloc goes back through alignedFree and nothing else.

#include <cstddef>
#include <cstdlib>

namespace tq {
namespace eod {
namespace detail {

// size bytes at a multiple of `alignment` (a power of two, a multiple of sizeof(void*)),
// or null when the heap refuses.
inline void* alignedAlloc(std::size_t size, std::size_t alignment) {
    void* p = nullptr;
    return posix_memalign(&p, alignment, size) == 0 ? p : nullptr;
}

// Ignores null.
inline void alignedFree(void* p) { std::free(p); }

}  // namespace detail
}  // namespace eod
}  // namespace tq

#endif
