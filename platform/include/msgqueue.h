// Point-to-point message queues.
//
// One end writes, the other end reads. A message is a block of bytes. Waiting on a queue handle ends when a message can
// be read [ms885180]. In this project programs hold the reading end and the device manager writes.
#pragma once

#include <windows.h>

struct MSGQUEUEOPTIONS {
    DWORD dwSize; // size of this record in bytes
    DWORD dwFlags;
    DWORD dwMaxMessages; // 0: no limit [ms886759]
    DWORD cbMaxMessage; // largest message in bytes
    BOOL bReadAccess; // TRUE opens the reading end
};
static_assert(sizeof(MSGQUEUEOPTIONS) == 20);

extern "C" {

// Creates a queue. A null name creates an unnamed queue. Returns null on failure [ms885180].
HANDLE WINAPI CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) noexcept;
// Reads and removes the oldest message. Waits up to `milliseconds` if the queue is empty.
// Returns FALSE with ERROR_TIMEOUT if the queue stays empty. Returns FALSE with ERROR_INSUFFICIENT_BUFFER if the
// message is longer than the buffer: the buffer then holds its beginning, and the rest is lost [ms886793].
BOOL WINAPI ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD bytes, DWORD* bytesRead, DWORD milliseconds,
                         DWORD* flags) noexcept;
// Closes a queue handle, as CloseHandle does. The queue and its unread messages go with the last handle.
BOOL WINAPI CloseMsgQueue(HANDLE queue) noexcept;

} // extern "C"
