#pragma once

#include "OrvaUtils/Concurrency/IRunnable.h"

#include <windows.h>

namespace OrvaUtils::Concurrency {

// A thread to be started. Deleting the object closes the thread's handle only: it neither stops the thread nor deletes
// what the thread runs. The order is start, stop, delete the thread, delete the runnable.
class IThread {
public:
    // Runs `runnable` (not owned) on a new thread, at once. The thread's handle, which stays the object's own, or null.
    // The runnable lets no exception out: one that leaves it ends the process.
    virtual HANDLE start(IRunnable* runnable) = 0;
    // Asks the runnable to stop and waits, without a limit, for the thread to end. The platform's answer to the wait.
    // Only for a thread that was started.
    virtual DWORD stop() = 0;
    virtual ~IThread() = default;
};

} // namespace OrvaUtils::Concurrency
