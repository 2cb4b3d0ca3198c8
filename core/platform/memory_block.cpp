// Movable memory blocks: the shared probe and the platform's block functions.
#include "core/platform/memory_block.h"

#include <new>

bool q5_MEM_IsMemoryLow(bool large) {
    const std::size_t bytes = large ? 167772160u : 41943040u;
    // A plain call of the allocation function, not a new-expression, so the compiler may not
    // drop the probe together with its release.
    void* probe = ::operator new(bytes, std::nothrow);
    if (probe == nullptr) return true;
    ::operator delete(probe);
    return false;
}

#if defined(_WIN32)
#include "core/platform/win32/memory_block.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/memory_block.inc"
#else
#error "memory blocks: unknown platform"
#endif
