// Shows requests that programs have sent to devices.
#pragma once

#include "platform/panel/Devices.h"
#include "platform/panel/Json.h"

#include <string>

namespace tool {

panel::Json requestJson(const panel::Request& request);
// Returns the request as text: "at 61000 ms, TarvexHelper.exe#1 thread 3: write 0 1 0 1 = done".
std::string requestText(const panel::Request& request);

} // namespace tool
