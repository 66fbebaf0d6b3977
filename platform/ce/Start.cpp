#include "platform/ce/Coredll.h"

#include <cstdlib>

namespace {

constexpr std::uintptr_t currentProcess = 66; // pseudo handle of the calling process
constexpr DWORD exceptionCode = 0xC0000005; // exit code of a crashed process

} // namespace

extern "C" {

void* __dso_handle = nullptr;
void __libc_init_array();

[[noreturn]] void runProgram(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int show) {
    // The heap comes first: the constructors in the arrays allocate memory.
    initialiseHeap();
    initialiseExceptions();
    initialiseStreams();
    initialiseCallbacks();
    __libc_init_array();
    std::exit(WinMain(instance, previous, commandLine, show));
}

// The C library calls these two, but all constructors and destructors are in the arrays.
void _init() {}
void _fini() {}

[[noreturn]] void _exit(int exitCode) {
    endProcess(static_cast<DWORD>(exitCode));
}

[[noreturn]] void abort() {
    endProcess(exceptionCode);
}

[[noreturn]] void __cxa_pure_virtual() {
    endProcess(exceptionCode);
}
}

void endProcess(DWORD exitCode) noexcept {
    // The platform may return from the call before it ends the process.
    for (;;)
        runtime_TerminateProcess(reinterpret_cast<HANDLE>(currentProcess), exitCode);
}
