// Sends and posts messages to the windows of other programs, as the application Tarvex does to the helper.
//
// Any thread of a program or driver (Driver.h) may call these functions. They throw std::runtime_error with a text for
// people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace panel {

inline constexpr std::uint32_t noLimit = 0xFFFFFFFF; // a time-out that never passes

// Returns the number of the first window of this class, or 0 if no such window exists. Class names are
// case-insensitive.
std::uint32_t findWindow(const std::string& className);

// Returns the message names that programs have registered since boot. Names that only `panel send` has registered are
// left out.
std::vector<std::string> registeredMessages();

// Sends a message and waits for the result of the window procedure. `message` is the name of a registered message or a
// number such as "0x10". `limit` is a time-out in ms of panel time.
// Returns an empty value if the window is destroyed first or the time-out passes. Throws if the window does not exist.
std::optional<std::int64_t> sendMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam,
                                        std::int64_t lParam, std::uint32_t limit = noLimit);

// Posts a message and returns at once. Throws if the window does not exist or the panel's table of messages is full.
void postMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam, std::int64_t lParam);

} // namespace panel
