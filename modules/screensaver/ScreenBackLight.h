#pragma once

#include <windows.h>

#include <array>
#include <atomic>

// The record of the backlight's driver: words 0 and 2 are the two brightness levels, 0 the darkest; what the others
// mean is the driver's own affair.
using BackLightSettings = std::array<DWORD, 4>;
static_assert(sizeof(BackLightSettings) == 16);

// The display's backlight, through the driver "BKL1:".
//
// Every failure is a ScreenBackLightException: "Driver open failed" (constructor), "Get back light settings failed",
// "Cannot update driver settings". Any thread may call; two that dim at the same moment may take the dimmed level for
// the user's. Each change of the level sets the event "BackLightLevelChangeEvent".
class ScreenBackLight {
public:
    // Opens the driver and reads its settings.
    ScreenBackLight();
    ScreenBackLight(const ScreenBackLight&) = delete;
    ScreenBackLight& operator=(const ScreenBackLight&) = delete;
    ~ScreenBackLight();

    // What `dim` will set: 255 times the fraction, cut to a whole number. 0 at first.
    void setLevel(float fraction);
    // Notes the levels that the user has, then sets both to the one above.
    void dim();
    // Sets what `dim` has noted.
    void restore();

private:
    BackLightSettings read();
    void write(DWORD word2, DWORD word0);

    HANDLE driver;
    BackLightSettings opened{}; // words 1 and 3 are sent back as they were when the driver was opened
    // The user's levels as last read. Two threads may change them at once, deliberately without a lock.
    std::atomic<DWORD> level0 = 0;
    std::atomic<DWORD> level2 = 0;
    std::atomic<int> dimLevel = 0;
};
