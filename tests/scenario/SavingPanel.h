// A panel whose helper saves the screen, and what can be seen of that.
#pragma once

#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

using Words = std::vector<std::uint32_t>;

inline const Words usersLevels{200, 1, 200, 1}; // the backlight's record on a new panel

Words dimmedTo(std::uint32_t level);

struct SavingPanel : ScenarioPanel {
    SavingPanel(); // installed, not started
    SavingPanel(bool enabled, int timeout, int level); // in its loop, with these settings

    void configure(bool enabled, int timeout, int level); // writes the settings file
    std::optional<std::int64_t> tell(std::uint64_t command, std::int64_t argument); // "ORVATarvexScreenSaverMsg"
    std::uint32_t exitCode(); // after a command that the helper does not survive
    void user(bool active); // until all is quiet

    // What the backlight's driver does with "read", "write".
    void refuse(const char* operation);
    void obey();

    Words levels(); // the backlight's record
    std::string blackWindow(); // "none", "hidden", or "black": then it is all that the screen shows
    std::int32_t cursor(); // shown while not below 0

    // What a thread of the helper did with screen and backlight since the trace was switched on.
    Lines steps(std::uint32_t thread) const;
};

// What `steps` has behind each successful write.
inline const Lines changed{"change event set", "change event closed"};
