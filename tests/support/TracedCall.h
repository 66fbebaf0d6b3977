#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A line of the helper's calls in the trace.
struct TracedCall {
    std::uint32_t process = 0; // which start of the helper; 0: another program's line
    std::uint32_t thread = 0;
    std::string function;
    std::uint32_t number = 0; // of the thread's calls of the function
    std::string arguments;
    std::string result; // one word
    bool failed = false;

    std::vector<std::string> argumentList() const; // not for texts with commas
};

TracedCall tracedCall(const std::string& line);
