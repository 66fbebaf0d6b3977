// What the C run time of the panel executable calls of coredll.dll for itself, through a block of imports of its own
// (Imports.S): a simulated panel can tell these calls from the program's, and neither counts nor traces them.
#pragma once

#include <windows.h>

inline constexpr DWORD TLS_FUNCALLOC = 0; // TlsCall: a new index
inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD PAGE_NOACCESS = 1;
inline constexpr DWORD PAGE_READWRITE = 4;

extern "C" {

void runtime_InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void runtime_EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
void runtime_LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
// What the destination held; it holds the new value afterwards if that was the expected one [ms885667].
LONG runtime_InterlockedCompareExchange(LONG* destination, LONG value, LONG expected) noexcept;
void runtime_Sleep(DWORD milliseconds) noexcept;
DWORD runtime_TlsCall(DWORD operation, DWORD index) noexcept; // an index of 0xFFFFFFFF: failure
LPVOID runtime_TlsGetValue(DWORD index) noexcept;
BOOL runtime_TlsSetValue(DWORD index, LPVOID value) noexcept;
LPVOID runtime_VirtualAlloc(LPVOID address, DWORD bytes, DWORD kind, DWORD protection) noexcept;
BOOL runtime_TerminateProcess(HANDLE process, DWORD exitCode) noexcept;

void releaseExceptions() noexcept; // what the calling thread's exceptions have taken; it throws no more
}

// A lock of the run time: recursive, ready as soon as initialise was called, at the very start.
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

// Before any constructor of the program.
void initialiseHeap() noexcept;
void initialiseExceptions() noexcept;
void initialiseStreams() noexcept;
void initialiseCallbacks() noexcept;
[[noreturn]] void endProcess(DWORD exitCode) noexcept;
