// Device notifications.
//
// A program registers a message queue with RequestDeviceNotifications. The device manager then writes one DEVDETAIL to
// the queue for each device that is attached or removed.
#pragma once

#include <windows.h>

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
static_assert(sizeof(GUID) == 16);

// One notification, as ReadMsgQueue returns it [ee485213]. The name has 16 bits per character on both platforms.
struct DEVDETAIL {
    GUID guidDevClass;
    DWORD dwReserved;
    BOOL fAttached; // TRUE: the device was attached; FALSE: it was removed
    int cbName; // size of the name in bytes, including the terminating zero
    std::uint16_t szName[1]; // first character of the name; the others follow this record
};
static_assert(offsetof(DEVDETAIL, fAttached) == 20 && offsetof(DEVDETAIL, szName) == 28);

extern "C" {

// Registers the queue for notifications about devices of this class. A null class stands for all classes.
// If `all` is TRUE, the devices that are already present are announced at once.
// Returns a handle for StopDeviceNotifications, or null on failure. Wait on the queue, not on this handle [ms919831].
HANDLE WINAPI RequestDeviceNotifications(const GUID* deviceClass, HANDLE queue, BOOL all) noexcept;
// Ends the notifications. Messages that are already in the queue stay readable.
BOOL WINAPI StopDeviceNotifications(HANDLE notifications) noexcept;

} // extern "C"
