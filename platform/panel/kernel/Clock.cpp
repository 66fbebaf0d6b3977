#include "platform/panel/kernel/Clock.h"

#include "platform/panel/kernel/Host.h"

#include <algorithm>

namespace panel::clock {

std::uint64_t now(const Image& image) {
    const ClockRecord& clock = image.clock;
    if (clock.mode == ClockMode::stepped)
        return clock.now;
    const auto real = static_cast<double>(host::monotonicNanoseconds() - clock.realBase);
    return clock.now + static_cast<std::uint64_t>(real / 1e9 * clock.factor);
}

std::uint32_t ticks(const Image& image) {
    return static_cast<std::uint32_t>(image.clock.bootTicks + now(image));
}

std::int64_t date(const Image& image) {
    return image.clock.bootDate + static_cast<std::int64_t>(now(image));
}

std::uint64_t deadline(const Image& image, std::uint32_t milliseconds) {
    return milliseconds == 0xFFFFFFFF ? never : now(image) + milliseconds;
}

std::uint32_t realUntil(const Image& image, std::uint64_t deadline) {
    if (deadline == never || image.clock.mode == ClockMode::stepped)
        return host::noLimit;
    const std::uint64_t current = now(image);
    if (deadline <= current)
        return 0;
    // One ms more, so that the deadline has passed when the sleeper looks at the clock.
    const double real = static_cast<double>(deadline - current) * 1000 / image.clock.factor + 1;
    return static_cast<std::uint32_t>(std::min<double>(real, host::noLimit - 1));
}

} // namespace panel::clock
