// What the panel's screen shows: which windows are visible, and how they cover each other. All functions want the lock
// held.
//
// A topmost window lies above one that is not; of two alike, the one that was shown last.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <vector>

namespace panel::screen {

// Whether it was visible before.
bool show(Image& image, WindowRecord& window, bool visible);
// Those that are visible, the uppermost first.
std::vector<const WindowRecord*> visibleWindows(const Image& image);
const WindowRecord* windowAt(const Image& image, std::int32_t x, std::int32_t y); // the uppermost; null: none
const WindowRecord* cover(const Image& image); // the uppermost that takes the whole screen; null: none

} // namespace panel::screen
