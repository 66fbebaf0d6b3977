// Points in panel time, as a user writes them:
//
//     2024-03-07T06:05:09    a date (UTC); 2024-03-07 is its first moment
//     5m                     five minutes before the panel's date, which stands still while the panel is off
//     +5m                    five minutes after the last boot
#pragma once

#include "platform/panel/Panel.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace tool {

// The time between the options --since and --before. It includes the first moment, but not the last.
class Period {
public:
    // Adds the two options. `what` names what they select, such as "lines".
    void addTo(CLI::App& command, const std::string& what);

    struct Span {
        std::int64_t begin = INT64_MIN;
        std::int64_t end = INT64_MAX;

        bool isUnlimited() const {
            return begin == INT64_MIN && end == INT64_MAX;
        }
        bool contains(std::int64_t time) const {
            return time >= begin && time < end;
        }
    };
    // Both functions throw Misuse for a malformed time, and std::runtime_error if the date of the last boot is needed
    // but not known. `logDates` returns the times in ms since 1970 UTC, rounded down to whole seconds as the dates of
    // the log are. `sinceBoot` returns them in ms since the last boot.
    Span logDates(const panel::Panel& panel) const;
    Span sinceBoot(const panel::Panel& panel) const;

private:
    std::string since; // empty: no limit
    std::string before;
};

} // namespace tool
