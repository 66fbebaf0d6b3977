#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// A call in the trace.
struct TracedCall {
    std::uint64_t time = 0; // panel ms
    std::string program; // "TarvexHelper.exe"
    std::uint32_t process = 0; // which start of the program
    std::uint32_t thread = 0;
    std::string function;
    std::uint32_t number = 0; // of the thread's calls of the function
    std::string text; // "Sleep(1000) = void after 1000 ms"
    std::string arguments;
    std::string result; // one word
    bool failed = false;

    std::vector<std::string> argumentList() const; // not for texts with commas; at least one, which may be empty
    std::string firstText() const; // among the arguments, without its quotes
};

// The calls in the trace of the panel in this directory, from this byte on.
std::vector<TracedCall> tracedCalls(const std::filesystem::path& panelDirectory, std::uintmax_t begin = 0);
