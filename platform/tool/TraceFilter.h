// Which lines of the call trace somebody wants to see.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct TraceFilter {
    std::vector<std::string> functions; // without regard to case; empty: all
    std::vector<std::string>
        processes; // "TarvexHelper.exe" or "TarvexHelper.exe#2", without regard to case; empty: all
    unsigned thread = 0; // 0: all
    bool failuresOnly = false; // calls that left an error, by themselves or by a fault

    bool admits(std::string_view line) const;
};

} // namespace tool
