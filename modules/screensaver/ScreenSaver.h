#pragma once

#include "modules/screensaver/BlackScreen.h"
#include "modules/screensaver/ScreenBackLight.h"
#include "modules/screensaver/UserInactivityMonitor.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

// Saves the screen while nobody touches the panel: dims the backlight, at level 0 also behind a black window.
//
// It is made, set and deleted on the main thread, whose message loop serves the black window; `notify` comes on the
// thread of its monitor. No lock stands between the two. Failures of the backlight's driver come out of whatever has
// driven it, and leave the state as it was.
class ScreenSaver : public UserInactivityMonitorObserver {
public:
    // A new one that watches the user: after 60000 ms the black screen. The caller ends it with `remove`. Throws a
    // ScreenSaverException: "Cannot register class", "Cannot create black screen window", "Driver open failed", "Get
    // back light settings failed", "Cannot create event".
    static ScreenSaver* create(HINSTANCE instance, const std::wstring& className);
    ScreenSaver(const ScreenSaver&) = delete;
    ScreenSaver& operator=(const ScreenSaver&) = delete;

    // Restores the screen, stops watching and deletes the screen saver; then throws what failed first, unless an
    // exception is in flight. While the monitor's thread goes on, the screen saver stays, without its window, until the
    // process ends.
    static void remove(ScreenSaver* screenSaver);

    // Applies from the next time that the user becomes inactive.
    void setTimeout(std::uint32_t milliseconds);
    // What the screen is dimmed to from the next time on: 0 is the black screen, 1 the full level of the driver.
    void setLevel(float fraction);

    // Saves the screen now, if it is not saved.
    void activate();
    // Restores it, if it is saved.
    void deactivate();

    void notify(const UserActivityEvent& event) override;

private:
    ScreenSaver(HINSTANCE instance, const std::wstring& className);
    ~ScreenSaver() noexcept(false) override = default;

    std::atomic<bool> active = false;
    std::atomic<bool> useBlackScreen = true;
    BlackScreen blackScreen;
    std::unique_ptr<ScreenBackLight> backLight;
    UserInactivityMonitor monitor;
};
