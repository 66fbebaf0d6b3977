#pragma once

#include <cstdint>

// What the process ends with: 0 for a normal end, a second instance and a hand-over to another instance, 1 after a
// failure that was caught. Used on the main thread only.
inline std::int32_t exitCode = 0;
