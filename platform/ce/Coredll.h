// The functions of coredll.dll that the panel executable's C run time calls for itself.
//
// They have an import block of their own (Imports.S) and the prefix runtime_. A simulated panel can therefore tell
// these calls from the program's calls; it neither counts nor traces them.
#pragma once

#include <windows.h>

inline constexpr DWORD TLS_FUNCALLOC = 0; // operation of TlsCall: allocate an index
inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD PAGE_NOACCESS = 1;
inline constexpr DWORD PAGE_READWRITE = 4;

extern "C" {

void runtime_InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void runtime_EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
void runtime_LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
// Stores `value` if the destination holds `expected`. Returns the former value in both cases [ms885667].
LONG runtime_InterlockedCompareExchange(LONG* destination, LONG value, LONG expected) noexcept;
void runtime_Sleep(DWORD milliseconds) noexcept;
DWORD runtime_TlsCall(DWORD operation, DWORD index) noexcept; // returns 0xFFFFFFFF on failure
LPVOID runtime_TlsGetValue(DWORD index) noexcept;
BOOL runtime_TlsSetValue(DWORD index, LPVOID value) noexcept;
LPVOID runtime_VirtualAlloc(LPVOID address, DWORD bytes, DWORD kind, DWORD protection) noexcept;
BOOL runtime_TerminateProcess(HANDLE process, DWORD exitCode) noexcept;

// Frees the memory of the calling thread's exceptions. The thread must not throw afterwards.
void releaseExceptions() noexcept;
}

// A recursive lock of the run time. Start-up calls `initialise` before any constructor of the program runs.
class RunTimeLock {
public:
    void initialise() noexcept {
        runtime_InitializeCriticalSection(&section);
    }
    void lock() noexcept {
        runtime_EnterCriticalSection(&section);
    }
    void unlock() noexcept {
        runtime_LeaveCriticalSection(&section);
    }

private:
    CRITICAL_SECTION section;
};

// Start-up calls these functions in this order, before any constructor of the program.
void initialiseHeap() noexcept;
void initialiseExceptions() noexcept;
void initialiseStreams() noexcept;
void initialiseCallbacks() noexcept;
// Ends the process without destructors and exit handlers.
[[noreturn]] void endProcess(DWORD exitCode) noexcept;
