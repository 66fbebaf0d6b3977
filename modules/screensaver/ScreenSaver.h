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
// The thread of the inactivity monitor calls `notify`. There is no lock between the two.
//
// Errors: a failure of the backlight driver throws ScreenBackLightException out of the operation that used the driver.
// Its state, engaged or not, then stays as it was before the operation. A failure in `notify` ends the monitor
// permanently: only the operations of the main thread engage or restore from then on.
class ScreenSaver : public UserInactivityMonitorObserver {
public:
    // Creates a screen saver and starts its monitor. At first the time-out is 60000 ms and the screen saver uses the
    // black window. The caller ends the object with `remove`.
    //
    // Throws a ScreenSaverException: "Cannot register class", "Driver open failed", "Get back light settings failed",
    // "Cannot create event" or "Cannot create black screen window".
    static ScreenSaver* create(HINSTANCE instance, const std::wstring& className);
    ScreenSaver(const ScreenSaver&) = delete;
    ScreenSaver& operator=(const ScreenSaver&) = delete;

    // Restores the screen, stops the monitor and deletes the screen saver. Completes all steps, then throws the first
    // exception, unless an exception is in flight. If the monitor's thread does not end, the object stays in memory
    // until the process ends, without its window.
    static void remove(ScreenSaver* screenSaver);

    // Sets the time-out. It counts from the next time that the user becomes inactive.
    void setTimeout(std::uint32_t milliseconds);
    // Sets the level, from 0 to 1, for the next time that the screen saver engages. 0 means the black window, 1 the
    // full level of the driver.
    void setLevel(float fraction);

    // Engages the screen saver now. Does nothing if it is engaged.
    void activate();
    // Restores the screen. Does nothing if the screen saver is not engaged.
    void deactivate();

    // Engages or restores. The monitor's thread calls it.
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
