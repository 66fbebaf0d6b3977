#pragma once

#include <windows.h>

namespace OrvaUtils::Concurrency {

// A manual-reset event without a name: once set, it releases every wait until it is reset.
//
// Any thread may call any operation, even at the same time. If the platform could not create the event, the object
// exists nevertheless: its waits return WAIT_FAILED, and `set` and `reset` return false.
class IEvent {
public:
    // Waits until the event is set, at most the given number of milliseconds; 0 only looks at the event. Returns
    // WAIT_OBJECT_0 (set), WAIT_TIMEOUT or WAIT_FAILED.
    virtual DWORD wait(unsigned timeoutMilliseconds) = 0;
    // Waits without a limit. Returns WAIT_OBJECT_0 or WAIT_FAILED.
    virtual DWORD wait() = 0;
    // Sets the event and releases all waiting threads. Returns false if the platform call fails.
    virtual bool set() = 0;
    // Resets the event: later waits block. Returns false if the platform call fails.
    virtual bool reset() = 0;
    // Closes the handle. No thread may wait for the event.
    virtual ~IEvent() = default;
};

} // namespace OrvaUtils::Concurrency
