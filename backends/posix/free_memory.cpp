#include "backends/posix/free_memory.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vistrane {

void useOneArena() {
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1);
#endif
}

void returnFreeMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace vistrane
