// The Windows CE API, as far as the helper needs it.
//
// Each function has one declaration and two implementations: coredll.dll on a panel (platform/ce) and the simulated
// panel on Linux (platform/panel). Names, types, constants and results follow the public documentation of Windows CE
// 5.0. A number in brackets such as [ms885181] is the id of a page of that documentation.
//
// Every function is noexcept: an exception must not pass through the platform's frames. If an exception leaves a
// callback (window procedure, thread entry), the process ends.
//
// Widths: wchar_t has 16 bits on a panel and 32 on Linux. Pointers, WPARAM and LPARAM have the machine's width. All
// other types have the same width on both platforms.
//
// Failures: coredll.inc lists every function declared here with its failure result and last error. Unless a comment
// says otherwise, a BOOL function returns FALSE on failure and sets the last error.
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

inline constexpr DWORD MAX_PATH = 260; // characters, including the terminating zero

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

// Returns the last error of the calling thread.
DWORD WINAPI GetLastError() noexcept;

// ---- Handles and waits ----------------------------------------------------------------------------------------------

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

// Closes a handle. The object is destroyed with its last handle. Closing a handle wakes no thread.
BOOL WINAPI CloseHandle(HANDLE object) noexcept;
// Waits until the object is signalled or the time-out has passed. INFINITE means no time-out, 0 means no wait.
// Returns WAIT_OBJECT_0, WAIT_TIMEOUT, WAIT_FAILED, or WAIT_ABANDONED if the owner of a mutex ended with it.
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept;
// Waits until one of the objects is signalled. Returns WAIT_OBJECT_0 plus the smallest signalled index. waitAll must be
// FALSE [aa450987].
DWORD WINAPI WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds) noexcept;

// ---- Events and mutexes ---------------------------------------------------------------------------------------------

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD EVENT_PULSE = 1; // operation codes of EventModify
inline constexpr DWORD EVENT_RESET = 2;
inline constexpr DWORD EVENT_SET = 3;
inline constexpr DWORD EVENT_ALL_ACCESS = 0x1F0003;

// Creates an event, or opens the event with this name. For an existing event the handle is valid and the last error is
// ERROR_ALREADY_EXISTS [ms885181]; for a new event the last error is ERROR_SUCCESS. A null name creates an unnamed
// event; "" is a name [ms885177, ms886764]. Returns null on failure.
HANDLE WINAPI CreateEventW(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState, LPCWSTR name) noexcept;
// Opens an existing event. Returns null with ERROR_FILE_NOT_FOUND if no event has this name.
HANDLE WINAPI OpenEventW(DWORD access, BOOL inherit, LPCWSTR name) noexcept;
// Sets, resets or pulses an event.
BOOL WINAPI EventModify(HANDLE event, DWORD operation) noexcept;
// Creates or opens a mutex, as CreateEventW does for an event. For an existing mutex initialOwner is ignored
// [ms885181].
HANDLE WINAPI CreateMutexW(SECURITY_ATTRIBUTES* security, BOOL initialOwner, LPCWSTR name) noexcept;
// Fails with ERROR_NOT_OWNER if the calling thread does not own the mutex.
BOOL WINAPI ReleaseMutex(HANDLE mutex) noexcept;

// ---- Critical sections ----------------------------------------------------------------------------------------------

struct CRITICAL_SECTION {
    LONG LockCount; // number of enters by the owner that were not left yet
    DWORD OwnerThread; // id of the owning thread; 0: the section is free
    HANDLE hCrit;
    DWORD needtrap; // simulated panel: 1 after a thread that did not own the section has left it
    DWORD dwContentions;
};
static_assert(sizeof(void*) != 4 || sizeof(CRITICAL_SECTION) == 20);

// Prepares a section for use. Call it once before any other function.
void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section) noexcept;
// Waits until the section is free and enters it. The owner may enter again.
void WINAPI EnterCriticalSection(CRITICAL_SECTION* section) noexcept;
// Leaves the section once. If the calling thread does not own the section, later calls of EnterCriticalSection may wait
// for ever [ms886733].
void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section) noexcept;
// Frees the resources of a section. No thread may use it any more.
void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section) noexcept;

// ---- Threads, processes, modules ------------------------------------------------------------------------------------

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

// The handles and ids of a new process. The caller closes both handles.
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

// Starts a thread. Returns a handle that is signalled when the thread ends, or null on failure.
HANDLE WINAPI CreateThread(SECURITY_ATTRIBUTES* security, DWORD stackSize, LPTHREAD_START_ROUTINE entry,
                           LPVOID parameter, DWORD flags, DWORD* threadId) noexcept;
// On a panel this function is inline, so coredll.inc does not list it.
DWORD WINAPI GetCurrentThreadId() noexcept;
// Starts a program. `module` is its path; a name without a path and extension gets ".exe". A null command line means
// the module's name. Security, inheritance, environment and directory must be null or FALSE [ms885182].
// If `module` is null, the first word of the command line names the program. The documentation page forbids this case.
BOOL WINAPI CreateProcessW(LPCWSTR module, LPWSTR commandLine, SECURITY_ATTRIBUTES* processSecurity,
                           SECURITY_ATTRIBUTES* threadSecurity, BOOL inherit, DWORD flags, LPVOID environment,
                           LPWSTR directory, STARTUPINFOW* startup, PROCESS_INFORMATION* information) noexcept;
// Stores the exit code, or STILL_ACTIVE while the process runs.
BOOL WINAPI GetExitCodeProcess(HANDLE process, DWORD* exitCode) noexcept;
// Returns the handle of the program itself. `module` must be null.
HMODULE WINAPI GetModuleHandleW(LPCWSTR module) noexcept;
// Stores the path that started the program. Returns the number of characters without the terminating zero, 0 on
// failure.
DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD characters) noexcept;

// A function of unknown type. Cast it to void* first and then to the real type: compilers accept this without a
// warning.
using FARPROC = std::intptr_t(WINAPI*)();

// Loads a library. The name is case-insensitive and ".dll" is optional. Returns null with ERROR_MOD_NOT_FOUND if the
// panel lacks the library.
HMODULE WINAPI LoadLibraryW(LPCWSTR library) noexcept;
// Looks a function up. The name is wide, unlike in other versions of Windows, and case-sensitive. Returns null with
// ERROR_PROC_NOT_FOUND if the library lacks the function.
FARPROC WINAPI GetProcAddressW(HMODULE library, LPCWSTR function) noexcept;
// Unloads a library. Each LoadLibraryW needs one FreeLibrary.
BOOL WINAPI FreeLibrary(HMODULE library) noexcept;
// Suspends the calling thread. INFINITE means for ever.
void WINAPI Sleep(DWORD milliseconds) noexcept;
// Sends a text to the debugger. The simulated panel writes it to run/output.
void WINAPI OutputDebugStringW(LPCWSTR text) noexcept;

// ---- Time -----------------------------------------------------------------------------------------------------------

// A date and time of day, in UTC here.
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

struct FILETIME { // units of 100 ns since 1601-01-01 UTC
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

// Returns the milliseconds since boot. The count wraps to 0 after 49.7 days [ms885645].
DWORD WINAPI GetTickCount() noexcept;
// Stores the current date and time in UTC.
void WINAPI GetSystemTime(SYSTEMTIME* time) noexcept;

// ---- Files ----------------------------------------------------------------------------------------------------------

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;

// Access rights, share modes and dispositions of CreateFileW; origins of SetFilePointer.
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

// A result of a search.
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

// Opens or creates a file, or opens a driver by its device name ("BKL1:", "\\NANDFlash\\Vol:"). Fails with
// ERROR_FILE_NOT_FOUND if the panel lacks the file or device, and with ERROR_SHARING_VIOLATION if another open handle
// does not share the file.
HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                          DWORD attributes, HANDLE pattern) noexcept; // INVALID_HANDLE_VALUE on failure
// ReadFile and WriteFile first set the count of bytes to 0, then do their work [ms891445, ms892380]. At the end of the
// file ReadFile succeeds with a count of 0.
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, DWORD* read, void* overlapped) noexcept;
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, DWORD* written, void* overlapped) noexcept;
// Moves the file position and returns its low 32 bits. `distanceHigh` is null or points to 0 [ms891933]; the call then
// stores the high 32 bits there. Returns INVALID_SET_FILE_POINTER on failure.
DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD origin) noexcept;
// Copies a file with its attributes and write time. Does not write onto a read-only, open or running file.
BOOL WINAPI CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL failIfExists) noexcept;
// Renames or moves a file or folder. Never replaces an existing file [ms891388].
BOOL WINAPI MoveFileW(LPCWSTR source, LPCWSTR destination) noexcept;
// Deletes a file. Fails with ERROR_ACCESS_DENIED if it is read-only or a process runs from it, and with
// ERROR_SHARING_VIOLATION if it is open.
BOOL WINAPI DeleteFileW(LPCWSTR path) noexcept;
// Creates a folder. The folder above it must exist. Fails with ERROR_ALREADY_EXISTS if the name is taken.
BOOL WINAPI CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* security) noexcept;
// Removes a folder. Fails with ERROR_DIR_NOT_EMPTY if the folder is not empty.
BOOL WINAPI RemoveDirectoryW(LPCWSTR path) noexcept;
// Returns FILE_ATTRIBUTE_* bits, or INVALID_FILE_ATTRIBUTES on failure.
DWORD WINAPI GetFileAttributesW(LPCWSTR path) noexcept;
// Sets or clears the read-only attribute of a file.
BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept;
// Starts a search. The last component of the pattern may hold "*" and "?". The results do not include "." and "..".
// Returns INVALID_HANDLE_VALUE if nothing matches. FindNextFileW returns FALSE with ERROR_NO_MORE_FILES at the end.
HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) noexcept;
BOOL WINAPI FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data) noexcept;
BOOL WINAPI FindClose(HANDLE search) noexcept;
// Sends a request to a driver [ms923699]. `code` is the IOCTL code. The driver defines the sizes of input and output.
// `returned` receives the number of output bytes and may be null. A driver may fail with any error.
BOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID input, DWORD inputSize, LPVOID output, DWORD outputSize,
                            DWORD* returned, void* overlapped) noexcept;
// Creates a shortcut file. Fails if the file exists. The target has at most 255 characters plus the terminating zero
// [aa932552].
BOOL WINAPI SHCreateShortcut(LPWSTR shortcut, LPWSTR target) noexcept;

} // extern "C"

// The program's entry. The platform calls it on the main thread. `instance` is the handle that GetModuleHandleW(null)
// returns; `previous` is null.
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPWSTR commandLine, int show);

#include <winreg.h>
#include <winuser.h>
