#pragma once

#include <cstdint>

// Returns the count of writes that the eMMC's controller keeps, read through the driver "SHC1:", in the unit of the
// driver. Returns 0 if the driver is missing or the request fails. Any thread may call.
std::uint32_t readWriteCounter();
