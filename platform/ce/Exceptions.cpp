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
ThreadExceptions reserve[32];
std::atomic<unsigned> reserved = 0;

DWORD exceptionsIndex;
RunTimeLock staticsLock;

void* newExceptions() noexcept {
    if (void* const exceptions = std::calloc(1, sizeof(ThreadExceptions)))
        return exceptions;
    const unsigned index = reserved++;
    return index < std::size(reserve) ? &reserve[index] : nullptr;
}

} // namespace

void initialiseExceptions() noexcept {
    exceptionsIndex = runtime_TlsCall(TLS_FUNCALLOC, 0);
    staticsLock.initialise();
}

namespace __cxxabiv1 {

// Kept for good: nobody tells when a thread ends. So it costs a few bytes for each thread that ever meets an exception.
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

// The lock is kept while a static is made: another thread that wants one waits. The first byte says that it is made.
extern "C" int __cxa_guard_acquire(__guard* guard) {
    staticsLock.lock();
    if (*reinterpret_cast<const char*>(guard) == 0)
        return 1;
    staticsLock.unlock();
    return 0;
}

extern "C" void __cxa_guard_release(__guard* guard) noexcept {
    *reinterpret_cast<char*>(guard) = 1;
    staticsLock.unlock();
}

extern "C" void __cxa_guard_abort(__guard*) noexcept {
    staticsLock.unlock();
}

} // namespace __cxxabiv1

// The library's own would print, on a machine without a console.
namespace __gnu_cxx {

void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
