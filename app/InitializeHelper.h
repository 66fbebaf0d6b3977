#pragma once

#include <windows.h>

#include <exception>

// Configures the log, writes "Init of Helper" and runs the start-up sequence. Call it once, on the main thread.
//
// Returns true if the module manager is to run. Returns false if the process is to end: either the installed helper has
// been started and takes over, or a step failed. A failure is logged and sets the exit code to 1. Nothing is thrown.
//
// `mutexHandle` is the single-instance mutex. The hand-over releases it and sets it to null. `earlierFailure` is an
// exception that the caller has caught before this call, when there was no log yet: it is reported as if the first step
// had thrown it.
bool InitializeHelper(HANDLE& mutexHandle, const std::exception_ptr& earlierFailure = nullptr);
