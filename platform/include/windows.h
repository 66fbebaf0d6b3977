// The Windows CE API, as far as the helper needs it.
//
// One declaration, two implementations: coredll.dll on a panel (platform/ce) and the simulated panel on Linux
// (platform/panel). Names, types, constants and results are those of the public documentation of Windows CE 5.0; page
// ids in brackets are those of its library. Every function is noexcept: an exception must not pass through the
// platform's frames, so a callback (window procedure, thread entry) that lets one out ends the process.
//
// Widths: wchar_t has 16 bits on a panel and 32 on Linux; pointers, WPARAM and LPARAM follow the machine. All other
// types have the width that they have on a panel.
//
// coredll.inc lists every function declared here, with what it answers when it fails.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#define WINAPI
#define CALLBACK

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = std::uint32_t;
using ATOM = WORD;
using WCHAR = wchar_t;
using LPVOID = void*;
using LPCVOID = const void*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using HANDLE = void*;
static_assert(sizeof(void*) != 4 || (sizeof(WCHAR) == 2 && WCHAR(-1) > 0)); // a panel's

struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

// NOLINTNEXTLINE: a pointer with all bits set is no constant expression.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))

inline constexpr DWORD MAX_PATH = 260; // characters, the terminating zero included

// ---- Errors ---------------------------------------------------------------------------------------------------------

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_NO_PROC_SLOTS = 89;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_NOT_OWNER = 288;
inline constexpr DWORD ERROR_REGISTRY_CORRUPT = 1015;
inline constexpr DWORD ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr DWORD ERROR_KEY_DELETED = 1018;
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_INVALID_HOOK_HANDLE = 1404;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_TIMEOUT = 1460;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

extern "C" {

DWORD WINAPI GetLastError() noexcept; // of the calling thread

// ---- Handles and waits ----------------------------------------------------------------------------------------------

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

BOOL WINAPI CloseHandle(HANDLE object) noexcept;
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept;
// waitAll must be FALSE; the smallest signalled index wins [aa450987].
DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds) noexcept;

// ---- Events and mutexes ---------------------------------------------------------------------------------------------

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD EVENT_PULSE = 1; // operation codes of EventModify
inline constexpr DWORD EVENT_RESET = 2;
inline constexpr DWORD EVENT_SET = 3;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x1F0003;

// An existing name gives a valid handle and ERROR_ALREADY_EXISTS [ms885181]; a new object leaves ERROR_SUCCESS. Null
// is no name, but "" is one [ms885177, ms886764].
HANDLE WINAPI CreateEventW(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState, LPCWSTR name) noexcept;
HANDLE WINAPI OpenEventW(DWORD access, BOOL inherit, LPCWSTR name) noexcept;
BOOL WINAPI EventModify(HANDLE event, DWORD operation) noexcept;
// An existing name: initialOwner is ignored [ms885181].
HANDLE WINAPI CreateMutexW(SECURITY_ATTRIBUTES* security, BOOL initialOwner, LPCWSTR name) noexcept;
// FALSE and ERROR_NOT_OWNER for a thread that does not own it.
BOOL WINAPI ReleaseMutex(HANDLE mutex) noexcept;

// ---- Critical sections ----------------------------------------------------------------------------------------------

struct CRITICAL_SECTION {
    LONG LockCount; // how often its owner has entered
    DWORD OwnerThread; // 0: nobody
    HANDLE hCrit;
    DWORD needtrap; // here: it was left by a thread that did not hold it
    DWORD dwContentions;
};
static_assert(sizeof(void*) != 4 || sizeof(CRITICAL_SECTION) == 20);

void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
void WINAPI EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
// By a thread that does not hold it: who enters from then on may wait for ever [ms886733].
void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section) noexcept;

// ---- Threads, processes, modules ------------------------------------------------------------------------------------

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
static_assert(sizeof(void*) != 4 || sizeof(PROCESS_INFORMATION) == 16);

struct STARTUPINFOW {
    DWORD cb;
    LPWSTR lpReserved;
    LPWSTR lpDesktop;
    LPWSTR lpTitle;
    DWORD dwX;
    DWORD dwY;
    DWORD dwXSize;
    DWORD dwYSize;
    DWORD dwXCountChars;
    DWORD dwYCountChars;
    DWORD dwFillAttribute;
    DWORD dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    BYTE* lpReserved2;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
};
static_assert(sizeof(void*) != 4 || sizeof(STARTUPINFOW) == 68);

inline constexpr DWORD STILL_ACTIVE = 259;

HANDLE WINAPI CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry,
                           LPVOID parameter, DWORD flags, DWORD* threadId) noexcept;
DWORD WINAPI GetCurrentThreadId() noexcept; // inline on a panel, hence not in coredll.inc
// Without a command line the program gets its module's name as one. A name without a path and without an extension
// means a ".exe". Security, inheritance, environment and directory must be null or FALSE [ms885182]. Without a module
// name the program is the command line's first word: that page refuses it.
BOOL WINAPI CreateProcessW(LPCWSTR module, LPWSTR commandLine, SECURITY_ATTRIBUTES* processSecurity,
                           SECURITY_ATTRIBUTES* threadSecurity, BOOL inherit, DWORD flags, LPVOID environment,
                           LPWSTR directory, STARTUPINFOW* startup, PROCESS_INFORMATION* information) noexcept;
BOOL WINAPI GetExitCodeProcess(HANDLE process, DWORD* exitCode) noexcept; // STILL_ACTIVE while it runs
HMODULE WINAPI GetModuleHandleW(LPCWSTR module) noexcept; // only null: the program itself
// Characters written, without the zero; the path that the program was started by. 0 on failure.
DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD characters) noexcept;

// Of no type in particular: to be cast, by way of void*, which compilers take without a warning.
using FARPROC = std::intptr_t(WINAPI*)();

// The name's case, and its ".dll", do not matter. Null and ERROR_MOD_NOT_FOUND if there is none.
HMODULE WINAPI LoadLibraryW(LPCWSTR library) noexcept;
// The name is wide, unlike elsewhere, and its case matters. Null and ERROR_PROC_NOT_FOUND if there is none.
FARPROC WINAPI GetProcAddressW(HMODULE library, LPCWSTR function) noexcept;
BOOL WINAPI FreeLibrary(HMODULE library) noexcept; // as often as it was loaded
void WINAPI Sleep(DWORD milliseconds) noexcept;
void WINAPI OutputDebugStringW(LPCWSTR text) noexcept;

// ---- Time -----------------------------------------------------------------------------------------------------------

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth; // 1 to 12
    WORD wDayOfWeek; // 0: Sunday
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
static_assert(sizeof(SYSTEMTIME) == 16);

struct FILETIME { // 100 ns since 1601-01-01 UTC
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

DWORD WINAPI GetTickCount() noexcept; // ms since boot, wraps after 49.7 days [ms885645]
void WINAPI GetSystemTime(SYSTEMTIME* time) noexcept; // UTC

// ---- Files ----------------------------------------------------------------------------------------------------------

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwOID;
    WCHAR cFileName[MAX_PATH];
};
static_assert(offsetof(WIN32_FIND_DATAW, cFileName) == 40 && sizeof(WIN32_FIND_DATAW) == 40 + MAX_PATH * sizeof(WCHAR));

// Also opens a driver, by the name of its device: "BKL1:", "\\NANDFlash\\Vol:". ERROR_FILE_NOT_FOUND if there is none.
HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                          DWORD attributes, HANDLE pattern) noexcept; // INVALID_HANDLE_VALUE on failure
// ReadFile and WriteFile begin with a count of 0 [ms891445, ms892380].
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, DWORD* read, void* overlapped) noexcept;
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, DWORD* written, void* overlapped) noexcept;
// The distance's high part is null or points to 0 [ms891933], where the position's high part comes back.
DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD origin) noexcept;
BOOL WINAPI CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL failIfExists) noexcept;
BOOL WINAPI MoveFileW(LPCWSTR source, LPCWSTR destination) noexcept; // never replaces [ms891388]
BOOL WINAPI DeleteFileW(LPCWSTR path) noexcept;
BOOL WINAPI CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* security) noexcept;
BOOL WINAPI RemoveDirectoryW(LPCWSTR path) noexcept; // empty ones only
DWORD WINAPI GetFileAttributesW(LPCWSTR path) noexcept;
BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept;
// "*" and "?" in the last component; no "." and ".."; INVALID_HANDLE_VALUE when nothing matches.
HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) noexcept;
BOOL WINAPI FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) noexcept;
BOOL WINAPI FindClose(HANDLE search) noexcept;
// A request to a driver [ms923699]: the code says what, and the sizes are those that the driver expects. `returned`,
// the bytes that came back, may be null. A driver may refuse with any error.
BOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize, LPVOID output, DWORD outputSize,
                            DWORD* returned, void* overlapped) noexcept;
BOOL WINAPI SHCreateShortcut(
    LPWSTR shortcut, LPWSTR target) noexcept; // FALSE if it exists, or if the target fills 256 characters [aa932552]

} // extern "C"

// The program's entry; the platform calls it on the main thread. The instance handle is that of GetModuleHandleW(null).
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int show);

#include <winreg.h>
#include <winuser.h>
