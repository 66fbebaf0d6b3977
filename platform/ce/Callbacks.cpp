// Aligns the stack for callbacks, the functions of the program that the platform calls. The compiler expects a stack
// that is aligned to 8 bytes; the platform guarantees 4 bytes only. The linker redirects the functions that take a
// callback to the wrappers here (--wrap). A wrapper passes an entry of Callbacks.S to the platform instead of the
// callback.
//
// A further function with a callback needs a --wrap and a wrapper here (check.py finds a missing --wrap), and a wrapper
// in the loader (platform/tool/loader/Functions.cpp).
#include "platform/ce/Coredll.h"

extern "C" {

struct CallbackEntry {
    unsigned instructions[2];
};
extern const CallbackEntry procedure_entries[];
extern void* procedure_functions[];
extern void* procedure_functions_end[];
extern const CallbackEntry thread_entries[];
extern void* thread_functions[];
extern void* thread_functions_end[];

HANDLE __real_CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry,
                           LPVOID parameter, DWORD flags, DWORD* threadId) noexcept;
ATOM __real_RegisterClassW(const WNDCLASSW* windowClass) noexcept;
HHOOK __real_SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept;
HANDLE __wrap_CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry,
                           LPVOID parameter, DWORD flags, DWORD* threadId) noexcept;
ATOM __wrap_RegisterClassW(const WNDCLASSW* windowClass) noexcept;
HHOOK __wrap_SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept;
}

namespace {

RunTimeLock callbacksLock;

struct Entries {
    const CallbackEntry* entries;
    void** functions; // the callback of each entry; null: the entry is free
    void** functionsEnd;
};
constexpr Entries procedures{procedure_entries, procedure_functions, procedure_functions_end};
constexpr Entries threads{thread_entries, thread_functions, thread_functions_end};

// Returns the entry of a callback. The same callback always gets the same entry. If all entries are used, returns the
// callback itself: a program has few callbacks.
template<class Function>
Function* aligned(Function* function, const Entries& among) noexcept {
    auto* const wanted = reinterpret_cast<void*>(function);
    Function* entry = function;
    callbacksLock.lock();
    for (void** slot = among.functions; wanted != nullptr && slot != among.functionsEnd; ++slot)
        if (*slot == wanted || *slot == nullptr) {
            *slot = wanted;
            entry =
                reinterpret_cast<Function*>(reinterpret_cast<std::uintptr_t>(among.entries + (slot - among.functions)));
            break;
        }
    callbacksLock.unlock();
    return entry;
}

} // namespace

void initialiseCallbacks() noexcept {
    callbacksLock.initialise();
}

HANDLE __wrap_CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry,
                           LPVOID parameter, DWORD flags, DWORD* threadId) noexcept {
    return __real_CreateThread(security, stackSize, aligned(entry, threads), parameter, flags, threadId);
}

ATOM __wrap_RegisterClassW(const WNDCLASSW* windowClass) noexcept {
    WNDCLASSW registered = *windowClass;
    registered.lpfnWndProc = aligned(registered.lpfnWndProc, procedures);
    return __real_RegisterClassW(&registered);
}

HHOOK __wrap_SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept {
    return __real_SetWindowsHookExW(type, aligned(procedure, procedures), instance, threadId);
}
