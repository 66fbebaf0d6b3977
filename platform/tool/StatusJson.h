// The state of a panel as JSON: the output of `panel status --json`.
#pragma once

#include "platform/panel/Driver.h"
#include "platform/panel/Json.h"

namespace tool {

// `driver`: the process's driver on this panel; null if the panel is off.
panel::Json statusJson(const panel::Panel& panel, panel::Driver* driver);

} // namespace tool
