// Formats the platform calls that have not returned yet.
#pragma once

#include "platform/panel/Driver.h"

#include <string>
#include <vector>

namespace tool {

// Returns a line per waiting thread. The time is the start of the wait:
// "      1000 TarvexHelper.exe#1 t1 GetMessageW[2]() has not returned".
std::vector<std::string> unreturnedCalls(const panel::PanelStatus& status);

} // namespace tool
