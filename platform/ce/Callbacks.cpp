// Functions of the program that the platform calls. The compiler expects a stack that is aligned to 8 bytes at each
// call; the platform promises 4. So the linker leads the calls that hand over a function here (--wrap), and the
// platform gets an entry of Callbacks.S. A further platform function that takes one wants a --wrap and a wrapper of its
// own.
#include "platform/ce/Coredll.h"

extern "C" {

struct CallbackEntry {
    unsigned instructions[2];
};
extern const CallbackEntry callback_entries[];
extern void* callback_functions[];
extern void* callback_functions_end[];

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

// The function's entry, for good. A program has few such functions; one too many goes as it is.
template<class Function>
Function* aligned(Function* function) noexcept {
    auto* const wanted = reinterpret_cast<void*>(function);
    Function* entry = function;
    callbacksLock.lock();
    for (void** slot = callback_functions; wanted != nullptr && slot != callback_functions_end; ++slot)
        if (*slot == wanted || *slot == nullptr) {
            *slot = wanted;
            entry = reinterpret_cast<Function*>(
                reinterpret_cast<std::uintptr_t>(callback_entries + (slot - callback_functions)));
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
    return __real_CreateThread(security, stackSize, aligned(entry), parameter, flags, threadId);
}

ATOM __wrap_RegisterClassW(const WNDCLASSW* windowClass) noexcept {
    WNDCLASSW registered = *windowClass;
    registered.lpfnWndProc = aligned(registered.lpfnWndProc);
    return __real_RegisterClassW(&registered);
}

HHOOK __wrap_SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept {
    return __real_SetWindowsHookExW(type, aligned(procedure), instance, threadId);
}
