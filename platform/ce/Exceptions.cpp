// The parts of the C++ run time that threads need: per-thread exception state and thread-safe local statics.
#include "platform/ce/Coredll.h"

#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <iterator>

namespace {

// The exception state of a thread, as the ARM ABI defines it. All zero means no exception.
struct ThreadExceptions {
    void* caught;
    unsigned uncaught;
    void* propagating;
};

// Spare states for threads whose first exception reports a full heap.
struct Reserve {
    ThreadExceptions exceptions{};
    std::atomic<unsigned> taken = 0;
};
constinit Reserve reserve[32];

DWORD exceptionsIndex;
RunTimeLock staticsLock;

void* newExceptions() noexcept {
    if (void* const exceptions = std::calloc(1, sizeof(ThreadExceptions)))
        return exceptions;
    for (Reserve& spare : reserve)
        if (spare.taken.exchange(1) == 0)
            return &spare.exceptions;
    return nullptr;
}

void freeExceptions(void* exceptions) noexcept {
    for (Reserve& spare : reserve)
        if (exceptions == &spare.exceptions) {
            spare.exceptions = {};
            spare.taken = 0;
            return;
        }
    std::free(exceptions);
}

// The first byte of a static's guard is 1 once the static is constructed; the compiler's own check reads it. The second
// byte is 1 while a thread constructs the static.
volatile char& isMade(__cxxabiv1::__guard* guard) noexcept {
    return *reinterpret_cast<volatile char*>(guard);
}

volatile char& isBeingMade(__cxxabiv1::__guard* guard) noexcept {
    return *(reinterpret_cast<volatile char*>(guard) + 1);
}

} // namespace

void initialiseExceptions() noexcept {
    exceptionsIndex = runtime_TlsCall(TLS_FUNCALLOC, 0);
    staticsLock.initialise();
}

void releaseExceptions() noexcept {
    if (void* const exceptions = runtime_TlsGetValue(exceptionsIndex)) {
        runtime_TlsSetValue(exceptionsIndex, nullptr);
        freeExceptions(exceptions);
    }
}

namespace __cxxabiv1 {

// Returns the calling thread's exception state. It is freed when the thread's entry function returns (Callbacks.S).
extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
    void* exceptions = runtime_TlsGetValue(exceptionsIndex);
    if (exceptions == nullptr) {
        exceptions = newExceptions();
        if (exceptions == nullptr || !runtime_TlsSetValue(exceptionsIndex, exceptions))
            std::abort();
    }
    return static_cast<__cxa_eh_globals*>(exceptions);
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return __cxa_get_globals();
}

// No lock is held while a static is constructed, since its constructor may wait for threads that use other statics. A
// thread that needs the same static polls with Sleep, a wait that the platform knows of.
extern "C" int __cxa_guard_acquire(__guard* guard) {
    while (isMade(guard) == 0) {
        staticsLock.lock();
        const bool mine = isMade(guard) == 0 && isBeingMade(guard) == 0;
        if (mine)
            isBeingMade(guard) = 1;
        staticsLock.unlock();
        if (mine)
            return 1;
        if (isMade(guard) == 0)
            runtime_Sleep(1);
    }
    return 0;
}

extern "C" void __cxa_guard_release(__guard* guard) noexcept {
    staticsLock.lock();
    isMade(guard) = 1;
    isBeingMade(guard) = 0;
    staticsLock.unlock();
}

extern "C" void __cxa_guard_abort(__guard* guard) noexcept {
    staticsLock.lock();
    isBeingMade(guard) = 0;
    staticsLock.unlock();
}

} // namespace __cxxabiv1

// Replaces the library's handler, which would print and thereby link the code for standard error.
namespace __gnu_cxx {

void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
