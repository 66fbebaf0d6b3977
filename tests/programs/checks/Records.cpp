// The panel's record layouts, as the public documentation has them. That this file compiles is the check.
#include <coredll.h>

#include <climits>

#define RECORD(record, bytes) static_assert(sizeof(record) == (bytes))
#define FIELD(record, field, offset) static_assert(offsetof(record, field) == (offset))

static_assert(sizeof(wchar_t) == 2 && wchar_t(-1) > 0);
static_assert(sizeof(void*) == 4 && sizeof(long) == 4 && sizeof(long long) == 8 && sizeof(std::size_t) == 4);
static_assert(sizeof(WPARAM) == 4 && sizeof(LPARAM) == 4 && sizeof(LRESULT) == 4 && sizeof(HANDLE) == 4);
static_assert(sizeof(BOOL) == 4 && sizeof(DWORD) == 4 && sizeof(WORD) == 2 && sizeof(ATOM) == 2);

RECORD(CRITICAL_SECTION, 20);
FIELD(CRITICAL_SECTION, OwnerThread, 4);
FIELD(CRITICAL_SECTION, hCrit, 8);

RECORD(PROCESS_INFORMATION, 16);
FIELD(PROCESS_INFORMATION, hThread, 4);
FIELD(PROCESS_INFORMATION, dwProcessId, 8);
FIELD(PROCESS_INFORMATION, dwThreadId, 12);

RECORD(STARTUPINFOW, 68);
FIELD(STARTUPINFOW, dwX, 16);
FIELD(STARTUPINFOW, dwFlags, 44);
FIELD(STARTUPINFOW, wShowWindow, 48);
FIELD(STARTUPINFOW, lpReserved2, 52);
FIELD(STARTUPINFOW, hStdError, 64);

RECORD(SYSTEMTIME, 16);
FIELD(SYSTEMTIME, wDay, 6);
FIELD(SYSTEMTIME, wMilliseconds, 14);
RECORD(FILETIME, 8);

RECORD(WIN32_FIND_DATAW, 560);
FIELD(WIN32_FIND_DATAW, ftCreationTime, 4);
FIELD(WIN32_FIND_DATAW, ftLastWriteTime, 20);
FIELD(WIN32_FIND_DATAW, nFileSizeLow, 32);
FIELD(WIN32_FIND_DATAW, dwOID, 36);
FIELD(WIN32_FIND_DATAW, cFileName, 40);

RECORD(WNDCLASSW, 40);
FIELD(WNDCLASSW, lpfnWndProc, 4);
FIELD(WNDCLASSW, hInstance, 16);
FIELD(WNDCLASSW, lpszClassName, 36);

RECORD(CREATESTRUCTW, 48);
FIELD(CREATESTRUCTW, hwndParent, 12);
FIELD(CREATESTRUCTW, cy, 16);
FIELD(CREATESTRUCTW, style, 32);
FIELD(CREATESTRUCTW, lpszClass, 40);

RECORD(MSG, 28);
FIELD(MSG, message, 4);
FIELD(MSG, lParam, 12);
FIELD(MSG, time, 16);
FIELD(MSG, pt, 20);

RECORD(POINT, 8);

RECORD(MSGQUEUEOPTIONS, 20);
FIELD(MSGQUEUEOPTIONS, bReadAccess, 16);

RECORD(GUID, 16);
FIELD(GUID, Data4, 8);

RECORD(DEVDETAIL, 32);
FIELD(DEVDETAIL, cbName, 24);
FIELD(DEVDETAIL, szName, 28);

RECORD(PARTINFO, 296);
FIELD(PARTINFO, szVolumeName, 132);
FIELD(PARTINFO, snNumSectors, 264);
FIELD(PARTINFO, bPartType, 292);
