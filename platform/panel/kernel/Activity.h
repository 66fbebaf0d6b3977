// The two events of the power manager that report user activity. They are manual-reset, and exactly one of them is
// signalled at any time [ms890502]. The kernel itself holds a handle to each from boot to off.
//
// All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <optional>

namespace panel::activity {

// Creates the events while the panel boots. The user is active then.
void make(Image& image);
// Signals one event and resets the other. Returns false if the panel has no power manager.
bool set(Image& image, bool active);
// Returns whether the user is active; empty if the panel has no power manager.
std::optional<bool> isActive(Image& image);

} // namespace panel::activity
