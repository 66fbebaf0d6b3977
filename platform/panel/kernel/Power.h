// How a panel loses its power.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <functional>
#include <string>

namespace panel::power {

// Notes in run/end why the panel goes off (Panel::whyOff), in place of an earlier note.
void note(const std::string& directory, const std::string& why);

// Switches the panel off: notices the programs that have ended and thereby closed their files, calls `settleFiles`,
// notes the reason, ends all programs, and lets a driver that waits for time see that the panel is off. `settleFiles`
// must not throw. Needs the kernel's lock. Afterwards the caller wakes the released threads, and a calling program ends
// its own process.
void off(Image& image, const std::string& directory, const std::string& why, const std::function<void()>& settleFiles);

} // namespace panel::power
