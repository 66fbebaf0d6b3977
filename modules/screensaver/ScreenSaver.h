#pragma once

#include "modules/screensaver/BlackScreen.h"
#include "modules/screensaver/ScreenBackLight.h"
#include "modules/screensaver/UserInactivityMonitor.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

// The screen saver: it dims the backlight when the user becomes inactive, and restores it when the user is active
// again. At level 0 it also covers the screen with a black window.
//
// Threads: the main thread creates, configures and removes the screen saver; its message loop serves the black window.
// The thread of the inactivity monitor calls `notify`. No lock protects the two threads from each other.
//
// Errors: a failure of the backlight driver throws ScreenBackLightException out of the operation that used the driver.
// The screen saver then stays engaged, or not engaged, as it was before the operation. A failure in `notify` ends the
// monitor permanently. From then on only `activate` and `deactivate` engage the screen saver and restore the screen.
class ScreenSaver : public UserInactivityMonitorObserver {
public:
    // Creates a screen saver and starts its monitor. The initial time-out is 60000 ms, and the initial level is 0. The
    // caller destroys the object with `remove`.
    //
    // Throws an exception of a class derived from ScreenSaverException: "Cannot register class", "Driver open failed",
    // "Get back light settings failed", "Cannot create event" or "Cannot create black screen window".
    static ScreenSaver* create(HINSTANCE instance, const std::wstring& className);
    ScreenSaver(const ScreenSaver&) = delete;
    ScreenSaver& operator=(const ScreenSaver&) = delete;

    // Restores the screen, stops the monitor and deletes the screen saver. All steps are done even if one of them
    // throws. The first exception is rethrown at the end, unless another exception is in flight. If the monitor's
    // thread does not end, the object stays in memory until the process ends, but its window is closed.
    // The window is hidden and closed by posted messages: the message loop must run.
    static void remove(ScreenSaver* screenSaver);

    // Sets the time-out: the time from the power manager's report that the user is inactive to the moment when the
    // screen saver engages. A wait that is in progress keeps its old time-out.
    void setTimeout(std::uint32_t milliseconds);
    // Sets the brightness of the engaged screen saver, as a fraction from 0 (the black window) to 1 (brightest). The
    // new brightness is used when the screen saver engages the next time.
    void setLevel(float fraction);

    // Engages the screen saver now. Does nothing if it is engaged.
    void activate();
    // Restores the screen. Does nothing if the screen saver is not engaged.
    void deactivate();

    // Engages the screen saver or restores the screen, depending on the event. The monitor's thread calls this.
    void notify(const UserActivityEvent& event) override;

private:
    ScreenSaver(HINSTANCE instance, const std::wstring& className);
    ~ScreenSaver() noexcept(false) override = default;

    // The screen saver is engaged.
    std::atomic<bool> active = false;
    std::atomic<bool> useBlackScreen = true;
    BlackScreen blackScreen;
    std::unique_ptr<ScreenBackLight> backLight;
    UserInactivityMonitor monitor;
};
