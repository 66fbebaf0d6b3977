// Watching a panel without letting its time pass.
#pragma once

#include "platform/panel/Panel.h"

#include <functional>

namespace tool {

// Calls it several times a second until the panel is off, and once more then. Not a part of the panel: a stepped panel
// stands still for all of it.
void followWhileOn(const panel::Panel& panel, const std::function<void()>& look);

} // namespace tool
