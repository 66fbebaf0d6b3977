// The platform calls that have not returned yet, for people.
#pragma once

#include "platform/panel/Driver.h"

#include <string>
#include <vector>

namespace tool {

// A line a thread that waits: "      1000 TarvexHelper.exe#1 t1 GetMessageW[2]() has not returned", with the panel time
// since when it waits.
std::vector<std::string> unreturnedCalls(const panel::PanelStatus& status);

} // namespace tool
