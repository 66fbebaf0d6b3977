// What the C++ run time needs where there are threads: each thread's exceptions, and statics that are made once.
#include "platform/ce/Coredll.h"

#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <iterator>

namespace {

// As the ABI for ARM lays it out. All zero: no exception.
struct ThreadExceptions {
    void* caught;
    unsigned uncaught;
    void* propagating;
};

// For threads whose first exception tells that there is no memory.
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

// Of a static's guard the first byte says that it is made, which the compiler's own look knows too; the second one that
// somebody is making it.
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

// Kept until the thread's entry returns (Callbacks.S).
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

// Whoever makes a static holds no lock meanwhile: its constructor may wait for threads that use other ones. Who wants
// the same one asks again and again, in waits that the platform knows of.
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

// The library's own would print, on a machine without a console.
namespace __gnu_cxx {

void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
