// Selects lines of the call trace. A line must meet all conditions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct TraceFilter {
    std::vector<std::string> functions; // case-insensitive; empty: all
    std::vector<std::string> processes; // "TarvexHelper.exe" or "TarvexHelper.exe#2", case-insensitive; empty: all
    unsigned thread = 0; // 0: all
    std::uint64_t from = 0; // panel ms: the calls that ended, or have not returned, from then on
    std::uint64_t to = UINT64_MAX; // panel ms: and until then
    bool failuresOnly = false; // only calls with an error, injected faults included

    // Returns whether a line meets the conditions.
    bool admits(std::string_view line) const;
};

} // namespace tool
