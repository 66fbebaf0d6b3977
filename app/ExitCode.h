#pragma once

#include <cstdint>

// The exit code of the process. 0 means a normal end, a second instance, or a hand-over to the installed helper. 1
// means that a failure was caught and logged. Only the main thread uses this variable.
inline std::int32_t exitCode = 0;
