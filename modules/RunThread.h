#pragma once

#include <windows.h>

// Runs the body of a worker thread and returns its result as the exit code of the thread. Every worker thread of the
// helper begins with it. An exception that leaves the body is logged at ERROR, with its message or as "Generic
// exception", and ends the thread with exit code 0. No exception leaves this function.
DWORD runThread(DWORD (*body)(LPVOID), LPVOID argument) noexcept;
