// Functions of the program that the platform calls. The compiler expects a stack that is aligned to 8 bytes at each
// call; the platform promises 4. So the linker leads the calls that hand over a function here (--wrap), and the
// platform gets an entry of Callbacks.S. A further platform function that takes one wants a --wrap and a wrapper of its
// own, and one in the loader (platform/tool/loader/Functions.cpp); check.py misses the --wrap.
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
    void** functions; // what each calls; null: nothing yet
    void** functionsEnd;
};
constexpr Entries procedures{procedure_entries, procedure_functions, procedure_functions_end};
constexpr Entries threads{thread_entries, thread_functions, thread_functions_end};

// The function's entry, for good. A program has few such functions; one too many goes as it is.
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
