// The person in front of a panel that is on: touches it, or leaves it alone. For drivers (Driver.h) and other threads
// of the panel. All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Client.h"

#include <cstdint>
#include <string>

namespace panel {

// What the power manager reports from now on. A panel may lack it: a failure.
void setUserActive(bool active);

struct Touch {
    enum class Kind { tap, press, release, move }; // a tap: pressed and released
    Kind kind = Kind::tap;
    bool right = false; // as the right button
    std::int32_t x = -1; // pixels; below 0: the middle of the screen
    std::int32_t y = -1;
    std::uint32_t limit = noLimit; // ms of panel time that the hook may take for each event
};

struct Landing {
    enum class Kind {
        landed,
        swallowed, // the hook's procedure has kept it
        unanswered, // the hook's procedure has not come back within the limit
    };
    Kind kind = Kind::landed;
    std::string window; // the class of the uppermost window there; empty: none, it went to what lies below all
    std::string process; // its
};

// Each event in turn: the mouse hook's procedure is called, if there is one, and this waits for it; then the event goes
// to the uppermost window at that place, the release of a tap to where its press went, and is noted in devices/touches.
// At last, unless unanswered, the user is active. Not on the thread that has the hook. Where a tap went is where its
// press went.
Landing touch(const Touch& touch);

} // namespace panel
