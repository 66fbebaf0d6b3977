// Messages to windows of other programs: what the application does to the helper. For programs of the panel and for
// drivers; any thread. All failures are std::runtime_error with a text for people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace panel {

inline constexpr std::uint32_t noLimit = 0xFFFFFFFF;

std::uint32_t findWindow(const std::string& className); // its number, case-blind; 0: there is none

std::vector<std::string> registeredMessages(); // names that programs have registered since boot

// `message` is a registered message's name, or a number ("0x10"). Waits for the window procedure's result; empty when
// the window went, or did not answer in so many ms of panel time.
std::optional<std::int64_t> sendMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam,
                                        std::int64_t lParam, std::uint32_t limit = noLimit);
void postMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam, std::int64_t lParam);

} // namespace panel
