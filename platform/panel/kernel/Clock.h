// Panel time: milliseconds since boot. Tick count and date follow from it.
//
// In stepped mode the clock stands still while any thread of a program runs; scheduler::step advances it. In flowing
// mode panel time is the host's monotonic time multiplied by a factor. All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel::clock {

std::uint64_t now(const Image& image); // panel ms since boot
std::uint32_t ticks(const Image& image); // tick count in ms; wraps at 32 bits
std::int64_t date(const Image& image); // ms since 1970 UTC

// Returns the panel time that lies this far in the future. INFINITE (all bits set) gives `never`.
std::uint64_t deadline(const Image& image, std::uint32_t milliseconds);

// Returns the real milliseconds until that panel time. Returns host::noLimit in stepped mode, in which panel time does
// not depend on real time.
std::uint32_t realUntil(const Image& image, std::uint64_t deadline);

} // namespace panel::clock
