// Point-to-point message queues: one end writes, one end reads, a message is a block of bytes. A handle's wait ends
// when there is something to read [ms885180].
#pragma once

#include <windows.h>

struct MSGQUEUEOPTIONS {
    DWORD dwSize; // of this record, bytes
    DWORD dwFlags;
    DWORD dwMaxMessages; // 0: no limit [ms886759]
    DWORD cbMaxMessage; // bytes
    BOOL bReadAccess; // TRUE: the reading end, FALSE: the writing one
};
static_assert(sizeof(MSGQUEUEOPTIONS) == 20);

inline constexpr DWORD MSGQUEUE_NOPRECOMMIT = 1;
inline constexpr DWORD MSGQUEUE_ALLOW_BROKEN = 2; // the queue lives on without its other end
inline constexpr DWORD MSGQUEUE_MSGALERT = 1; // a message's flag, of ReadMsgQueue and WriteMsgQueue

extern "C" {

// null on failure [ms885180]. A null name makes a queue of its own; an existing name gives ERROR_ALREADY_EXISTS.
HANDLE WINAPI CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) noexcept;
// FALSE and ERROR_TIMEOUT when it stays empty, ERROR_INSUFFICIENT_BUFFER (what fits was copied) [ms886793].
BOOL WINAPI ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD bytes, DWORD* bytesRead, DWORD milliseconds,
                         DWORD* flags) noexcept;
BOOL WINAPI WriteMsgQueue(HANDLE queue, LPVOID data, DWORD bytes, DWORD milliseconds, DWORD flags) noexcept;
BOOL WINAPI CloseMsgQueue(HANDLE queue) noexcept;

} // extern "C"
