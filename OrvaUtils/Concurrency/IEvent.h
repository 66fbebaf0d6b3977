#pragma once

#include <windows.h>

namespace OrvaUtils::Concurrency {

// A manual-reset event: once set, it lets every wait through until it is reset. Any thread may call any operation.
class IEvent {
public:
    // Waits at most so many milliseconds. The platform's answer: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
    virtual DWORD wait(unsigned timeoutMilliseconds) = 0;
    // Waits for as long as it takes.
    virtual DWORD wait() = 0;
    // Both answer whether the platform did it.
    virtual bool set() = 0;
    virtual bool reset() = 0;
    virtual ~IEvent() = default;
};

} // namespace OrvaUtils::Concurrency
