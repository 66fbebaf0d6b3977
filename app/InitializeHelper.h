#pragma once

#include <windows.h>

#include <exception>

// Configures the log and runs the start-up sequence. True when the module manager is to run; false when this process is
// to end, either because the installed helper has been started in its place or after a failure, which is logged and in
// the exit code. The handle of the instance lock is cleared when the lock was released for the other instance. A
// failure from before counts as that of the first step.
bool InitializeHelper(HANDLE& mutexHandle, const std::exception_ptr& earlierFailure = nullptr);
