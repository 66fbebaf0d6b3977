// How long a person's command waits, in real time, for a program that does not go on: one that never waits while time
// is stepped, or that was stopped. Panel time says nothing about it. Without a limit, as in tests, waits have no end.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>

namespace panel::patience {

// Set once, before the process takes part in a panel. `giveUp` is told why, on any thread, and must end the process.
struct Limit {
    std::uint32_t milliseconds = 0; // 0: none
    void (*giveUp)(const std::string& why) = nullptr;
};
extern Limit limit;

// Who keeps stepped time from moving. Wants the lock.
std::string busyPrograms(Image& image);

} // namespace panel::patience
