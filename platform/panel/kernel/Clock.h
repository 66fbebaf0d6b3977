// Panel time. All functions want the lock held.
//
// Stepped: time stands still while any thread of the panel runs; see scheduler::step. Flowing: the host's monotonic
// clock times a factor. Panel time counts milliseconds since boot; ticks and dates follow from it.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel::clock {

std::uint64_t now(const Image& image);
std::uint32_t ticks(const Image& image); // wraps
std::int64_t date(const Image& image); // ms since 1970 UTC

// The panel time so many milliseconds from now; `never` for all bits set.
std::uint64_t deadline(const Image& image, std::uint32_t milliseconds);

// Real milliseconds until that panel time, or for ever (host::noLimit): only flowing time gets nearer by itself.
std::uint32_t realUntil(const Image& image, std::uint64_t deadline);

} // namespace panel::clock
