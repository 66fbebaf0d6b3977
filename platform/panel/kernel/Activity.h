// The power manager's two events that tell whether somebody uses the panel: manual-reset and complementary [ms890502].
// The kernel holds them from boot to off. All functions want the lock held.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <optional>

namespace panel::activity {

void make(Image& image); // at boot: the user is active
// False: the panel has no power manager.
bool set(Image& image, bool active);
std::optional<bool> isActive(Image& image); // empty: no power manager

} // namespace panel::activity
