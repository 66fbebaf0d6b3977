// The panel's screen: which windows are visible and which window covers another.
//
// A topmost window lies above all windows that are not topmost. Among windows of the same kind the one that was shown
// last is the uppermost. All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <vector>

namespace panel::screen {

// Shows or hides a window. Returns whether it was visible before.
bool show(Image& image, WindowRecord& window, bool visible);
// Returns the visible windows, the uppermost first.
std::vector<const WindowRecord*> visibleWindows(const Image& image);
// Returns the uppermost window at this pixel, or null.
const WindowRecord* windowAt(const Image& image, std::int32_t x, std::int32_t y);
// Returns the uppermost window that covers the whole screen, or null.
const WindowRecord* cover(const Image& image);

} // namespace panel::screen
