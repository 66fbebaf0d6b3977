#pragma once

#include <windows.h>

// The frame of every worker thread, for its entry: runs the body and returns its result, the thread's exit code. An
// exception that leaves the body is logged at ERROR, with its message or as "Generic exception", and ends the thread
// with 0. Nothing leaves this function.
DWORD runThread(DWORD (*body)(LPVOID), LPVOID argument) noexcept;
