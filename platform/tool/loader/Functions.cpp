// The functions to which the loader binds the imports of the panel executable. The C run time's own imports are
// implemented here and bypass the gate, so that they are neither counted nor traced.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Wait.h"
#include "platform/tool/loader/Callbacks.h"
#include "platform/tool/loader/Image.h"

#include <coredll.h>

#include <map>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace loader {

namespace {

constexpr DWORD memReserve = 0x2000;

// A lock of the run time is a host mutex. The section's handle field holds its address.
pthread_mutex_t* mutexOf(const CRITICAL_SECTION* section) {
    return static_cast<pthread_mutex_t*>(section->hCrit);
}

namespace runtime {

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    auto* mutex = new pthread_mutex_t; // never deleted
    pthread_mutex_init(mutex, &attributes);
    section->hCrit = mutex;
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutex_lock(mutexOf(section));
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept {
    pthread_mutex_unlock(mutexOf(section));
}

LONG InterlockedCompareExchange(LONG* destination, LONG value, LONG expected) noexcept {
    __atomic_compare_exchange_n(destination, &expected, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return expected;
}

// Sleeps in panel time.
void Sleep(DWORD milliseconds) noexcept {
    panel::Runtime& panel = panel::Runtime::instance();
    panel::sleepFor(panel.image(), panel.thread().slot, milliseconds);
}

DWORD TlsCall(DWORD operation, DWORD) noexcept { // supports operation 0 only: a new index
    pthread_key_t key = 0;
    return operation == 0 && pthread_key_create(&key, nullptr) == 0 ? key : 0xFFFFFFFF;
}

LPVOID TlsGetValue(DWORD index) noexcept {
    return pthread_getspecific(index);
}

BOOL TlsSetValue(DWORD index, LPVOID value) noexcept {
    return pthread_setspecific(index, value) == 0;
}

LPVOID VirtualAlloc(LPVOID address, DWORD bytes, DWORD kind, DWORD) noexcept {
    if (kind & memReserve) {
        void* block = mmap(address, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        return block == MAP_FAILED ? nullptr : block;
    }
    return mprotect(address, bytes, PROT_READ | PROT_WRITE) == 0 ? address : nullptr;
}

BOOL TerminateProcess(HANDLE, DWORD exitCode) noexcept { // always ends the calling process
    panel::Runtime::endProcess(exitCode);
    _exit(static_cast<int>(exitCode & 0xFF));
}

} // namespace runtime

// Wrappers of the functions with callbacks. They give each callback the stack of a real panel.
namespace program {

HANDLE CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry, LPVOID parameter,
                    DWORD flags, DWORD* threadId) noexcept {
    return ::CreateThread(security, stackSize, onPlatformStack(entry), parameter, flags, threadId);
}

ATOM RegisterClassW(const WNDCLASSW* windowClass) noexcept {
    WNDCLASSW registered = *windowClass;
    registered.lpfnWndProc = onPlatformStack(registered.lpfnWndProc);
    return ::RegisterClassW(&registered);
}

HHOOK SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept {
    return ::SetWindowsHookExW(type, onPlatformStack(procedure), instance, threadId);
}

} // namespace program

using Table = std::map<std::string, void*>;

template<class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

Table programTable() {
    return {
        // A map keeps the first entry of a name, so these three replace the entries below.
        {"CreateThread", address(&program::CreateThread)},
        {"RegisterClassW", address(&program::RegisterClassW)},
        {"SetWindowsHookExW", address(&program::SetWindowsHookExW)},
#define COREDLL(name, how, failure, lastError) {#name, address(&::name)},
#define COREDLL_SURE(name, how) {#name, address(&::name)},
#include <coredll.inc>
    };
}

Table runTimeTable() {
    return {
#define COREDLL(name, how, failure, lastError)
#define COREDLL_SURE(name, how)
#define COREDLL_RUN_TIME(name) {#name, address(&runtime::name)},
#include <coredll.inc>
    };
}

} // namespace

void* functionNamed(const std::string& name, bool runTime) {
    static const Table program = programTable();
    static const Table own = runTimeTable();
    const Table& table = runTime ? own : program;
    const auto found = table.find(name);
    return found == table.end() ? nullptr : found->second;
}

} // namespace loader
