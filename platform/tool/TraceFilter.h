// Selects lines of the call trace. A line must meet all conditions.
#pragma once

#include "platform/tool/Period.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct TraceFilter {
    std::vector<std::string> functions; // case-insensitive; empty: all
    std::vector<std::string> processes; // "TarvexHelper.exe" or "TarvexHelper.exe#2", case-insensitive; empty: all
    unsigned thread = 0; // 0: all
    Period::Span ended; // ms since boot: only the calls that ended then; if a call has not returned, its begin counts
    bool failuresOnly = false; // only calls with an error, injected faults included

    // Returns whether a line meets the conditions.
    bool admits(std::string_view line) const;
};

} // namespace tool
