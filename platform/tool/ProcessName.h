// Compares process names.
#pragma once

#include "platform/panel/Text.h"

#include <string>

namespace tool {

// Returns whether the user means this process: "TarvexHelper.exe" means all starts, "TarvexHelper.exe#2" one start.
inline bool namesProcess(const std::string& wanted, const std::string& name) {
    return panel::equalCaseBlind(wanted, name) || panel::equalCaseBlind(wanted, name.substr(0, name.rfind('#')));
}

} // namespace tool
