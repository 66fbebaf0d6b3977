#pragma once

#include <cstdint>

// What the eMMC's controller has counted as written, by the driver "SHC1:", in a unit of the driver's own. 0 when there
// is no such driver or it refuses. Any thread may call.
std::uint32_t readWriteCounter();
