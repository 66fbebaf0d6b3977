// The person in front of a panel that is on: touches the screen and counts as active or inactive.
//
// Drivers (Driver.h) and other threads of the panel may call these functions. All failures are std::runtime_error with
// a text for people.
#pragma once

#include "platform/panel/Client.h"

#include <cstdint>
#include <string>

namespace panel {

// Sets the events of the power manager. Throws if the panel has no power manager.
void setUserActive(bool active);

// A touch of the screen.
struct Touch {
    enum class Kind { tap, press, release, move }; // a tap is a press followed by a release
    Kind kind = Kind::tap;
    bool right = false; // the right button
    std::int32_t x = -1; // pixels; below 0: the middle of the screen
    std::int32_t y = -1;
    std::uint32_t limit = noLimit; // time-out for the hook procedure in panel ms, for each event
};

// The result of a touch. For a tap it is the result of the press.
struct Landing {
    enum class Kind {
        landed,
        swallowed, // the hook procedure returned non-zero: no window got the event
        unanswered, // the hook procedure did not return within the limit: the event is lost
    };
    Kind kind = Kind::landed;
    std::string window; // class of the uppermost window at this place; empty: no window
    std::string process; // process of that window
};

// Touches the screen. For each event of the touch:
// 1. If a mouse hook is installed, its procedure runs on its thread, and this call waits for it.
// 2. If the hook does not swallow the event, the event is posted to the uppermost window at that place. The release of
//    a tap goes to the window that got the press.
// 3. The event is recorded in devices/touches.
// At the end the user becomes active. An unanswered event ends the touch at once.
// The thread that installed the hook must not call this function.
Landing touch(const Touch& touch);

} // namespace panel
