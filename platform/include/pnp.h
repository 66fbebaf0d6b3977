// Device notifications: the device manager writes one DEVDETAIL for each device that comes or goes to the queues that
// asked.
#pragma once

#include <windows.h>

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
static_assert(sizeof(GUID) == 16);

// A message of a notification's queue [ee485213]. The name's text has 16 bits a character on both platforms.
struct DEVDETAIL {
    GUID guidDevClass;
    DWORD dwReserved;
    BOOL fAttached;
    int cbName; // bytes of the name, its zero included
    std::uint16_t szName[1]; // and what follows it, up to the zero
};
static_assert(offsetof(DEVDETAIL, fAttached) == 20 && offsetof(DEVDETAIL, szName) == 28);

extern "C" {

// `all`: announce the devices that are present too, at once. One waits on the queue, not on this handle. null on
// failure [ms919831].
HANDLE WINAPI RequestDeviceNotifications(const GUID* deviceClass, HANDLE queue, BOOL all) noexcept;
BOOL WINAPI StopDeviceNotifications(HANDLE notifications) noexcept;

} // extern "C"
