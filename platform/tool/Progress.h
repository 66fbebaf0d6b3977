// Shows how far a command is that takes long: a text in the last line of the terminal, if standard error is a terminal.
// A message on standard error overwrites the text.
#pragma once

#include "platform/panel/Driver.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tool {

class Progress {
public:
    // Shows `text` at once, unless it is empty.
    explicit Progress(const std::string& text = {});
    ~Progress(); // erases the text
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Replaces the text, by one such as "3 s of 1 min". Call it as often as you like: it shows nothing in the first
    // second, and then five texts a second at most.
    void show(const std::function<std::string()>& text);

private:
    const bool terminal;
    bool shown;
    std::int64_t next; // the host's monotonic time in ns
};

// Waits as Driver::waitUntil does, and shows the panel time that has passed.
bool waitWithProgress(panel::Driver& driver, const std::function<bool()>& condition, std::uint64_t limit);

} // namespace tool
