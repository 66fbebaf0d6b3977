// Point-to-point message queues: one end writes, one end reads, a message is a block of bytes. A handle's wait ends
// when there is something to read [ms885180]. Programs of the panel have the reading end; the device manager writes.
#pragma once

#include <windows.h>

struct MSGQUEUEOPTIONS {
    DWORD dwSize; // of this record, bytes
    DWORD dwFlags;
    DWORD dwMaxMessages; // 0: no limit [ms886759]
    DWORD cbMaxMessage; // bytes
    BOOL bReadAccess; // TRUE: the reading end
};
static_assert(sizeof(MSGQUEUEOPTIONS) == 20);

extern "C" {

// null on failure [ms885180]. A null name makes a queue of its own.
HANDLE WINAPI CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) noexcept;
// FALSE and ERROR_TIMEOUT when it stays empty, ERROR_INSUFFICIENT_BUFFER (what fits was copied) [ms886793].
BOOL WINAPI ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD bytes, DWORD* bytesRead, DWORD milliseconds,
                         DWORD* flags) noexcept;
BOOL WINAPI CloseMsgQueue(HANDLE queue) noexcept; // CloseHandle does the same

} // extern "C"
