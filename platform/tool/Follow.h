// Watches a panel without joining it.
#pragma once

#include "platform/panel/Panel.h"

#include <functional>

namespace tool {

// Calls `look` several times a second until the panel is off, and once more then. The command is not a driver, so the
// time of a stepped panel does not move.
void followWhileOn(const panel::Panel& panel, const std::function<void()>& look);

} // namespace tool
