// The real-time limit of a command's waits (`--patience`).
//
// A program that never waits, or that was stopped by a signal, keeps stepped time from moving for ever. A time-out in
// panel time never passes then. With a limit a command gives up instead. Without a limit, as in tests, it waits for
// ever.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>

namespace panel::patience {

// The process sets this once, before it joins a panel.
struct Limit {
    std::uint32_t milliseconds = 0; // 0: no limit
    // Runs when the limit has passed, on any thread. `why` is a text for people. Must end the process.
    void (*giveUp)(const std::string& why) = nullptr;
};
extern Limit limit;

// Returns a text about the programs that keep stepped time from moving. Needs the kernel's lock.
std::string busyPrograms(Image& image);

} // namespace panel::patience
