#pragma once

#include <windows.h>

#include <array>
#include <atomic>

// The record of the backlight driver. Words 0 and 2 are the two brightness levels; 0 is the darkest level. Only the
// driver defines the meaning of words 1 and 3.
using BackLightSettings = std::array<DWORD, 4>;
static_assert(sizeof(BackLightSettings) == 16);

// The backlight of the display, controlled through the driver "BKL1:".
//
// Failures throw ScreenBackLightException with the message given below. Each change of the level signals the named
// event "BackLightLevelChangeEvent". Any thread may call. There is no lock, deliberately: two threads that dim at the
// same time may take the dimmed level for the user's level.
class ScreenBackLight {
public:
    // Opens the driver and reads its settings. Throws "Driver open failed" or "Get back light settings failed".
    ScreenBackLight();
    ScreenBackLight(const ScreenBackLight&) = delete;
    ScreenBackLight& operator=(const ScreenBackLight&) = delete;
    ~ScreenBackLight();

    // Sets the level that `dim` uses: 255 times the fraction, truncated. The level is 0 at first.
    void setLevel(float fraction);
    // Reads the user's levels and sets both levels to the dim level. Throws "Get back light settings failed" or "Cannot
    // update driver settings".
    void dim();
    // Sets the levels that were read last, normally by `dim`. Throws "Cannot update driver settings".
    void restore();

private:
    BackLightSettings read();
    void write(DWORD word2, DWORD word0);

    HANDLE driver;
    BackLightSettings opened{}; // words 1 and 3 are sent back as they were when the driver was opened
    // The user's levels as last read. Two threads may change them at the same time, deliberately without a lock.
    std::atomic<DWORD> level0 = 0;
    std::atomic<DWORD> level2 = 0;
    std::atomic<int> dimLevel = 0;
};
