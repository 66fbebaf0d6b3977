// The heap of malloc: one reserved block, which is committed in steps as malloc needs it.
#include "platform/ce/Coredll.h"

#include <cerrno>
#include <cstddef>

struct _reent;

namespace {

// 8 MB. A reservation of 2 MB or more lies outside of the process's own 32 MB.
constexpr DWORD reserved = 0x800000;
constexpr DWORD step = 0x10000;

RunTimeLock heapLock;
char* base;
char* end; // end of the used part
char* committed; // end of the committed part

} // namespace

void initialiseHeap() noexcept {
    heapLock.initialise();
    base = static_cast<char*>(runtime_VirtualAlloc(nullptr, reserved, MEM_RESERVE, PAGE_NOACCESS));
    end = committed = base;
}

extern "C" {

void* _sbrk(std::ptrdiff_t increment) {
    const std::ptrdiff_t room = base == nullptr ? 0 : base + reserved - end;
    if (increment > room) {
        errno = ENOMEM;
        return reinterpret_cast<void*>(-1);
    }
    char* const start = end;
    char* const wanted = end + increment;
    // Committed pages are never given back: a negative increment only moves the end.
    while (committed < wanted) {
        if (runtime_VirtualAlloc(committed, step, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
            errno = ENOMEM;
            return reinterpret_cast<void*>(-1);
        }
        committed += step;
    }
    end = wanted;
    return start;
}

void __malloc_lock(_reent*) {
    heapLock.lock();
}

void __malloc_unlock(_reent*) {
    heapLock.unlock();
}
}
