#pragma once

#include "OrvaUtils/Concurrency/IRunnable.h"

#include <windows.h>

namespace OrvaUtils::Concurrency {

// A worker thread that executes an IRunnable.
//
// Call `start`, then `stop`, then delete this object, then delete the runnable. The destructor only closes the thread's
// handle: it does not stop the thread and does not delete the runnable. Only one thread, the owner, may use the object.
class IThread {
public:
    // Creates a thread that runs `runnable` at once. Returns the thread handle, which the object still owns, or null if
    // CreateThread fails. The object does not own the runnable. An exception that leaves the runnable ends the process.
    virtual HANDLE start(IRunnable* runnable) = 0;
    // Calls `stop` of the runnable on the calling thread, then waits without a limit for the thread to end. Returns the
    // result of WaitForSingleObject. `start` must have been called.
    virtual DWORD stop() = 0;
    virtual ~IThread() = default;
};

} // namespace OrvaUtils::Concurrency
