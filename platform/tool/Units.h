// Converts durations, dates and numbers between text and values. A malformed text throws Misuse.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tool {

// The command was used wrongly. The text says what is wrong.
class Misuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Runs an action on the user's input and turns its std::runtime_error into a Misuse.
template<class Action>
auto orMisuse(Action action) {
    try {
        return action();
    } catch (const std::runtime_error& error) {
        throw Misuse(error.what());
    }
}

// Returns a duration in ms: "1500", "1500ms", "1.5s", "5m" or "5min", "1h30min", "7d". Larger units come first.
std::uint64_t parseDuration(const std::string& text);
// Returns a duration that fits a 32-bit time-out other than INFINITE.
std::uint32_t parseLimit(const std::string& text);
std::string formatDuration(std::uint64_t milliseconds); // "950 ms", "1.5 s", "2 min 3 s", "7 d 1 h"

// Returns ms since 1970 UTC: "2024-03-07", "2024-03-07T06:05:09", "2024-03-07 06:05:09".
std::int64_t parseDate(const std::string& text);
std::string formatDate(std::int64_t milliseconds); // "2024-03-07 06:05:09 UTC"

std::int64_t parseNumber(const std::string& text); // decimal or "0x..", with a sign
std::uint32_t parseValue(const std::string& text); // the same, 0 to 0xFFFFFFFF

} // namespace tool
