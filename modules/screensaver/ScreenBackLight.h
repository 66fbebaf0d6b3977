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
    // Two threads may change the levels at once, deliberately without a lock: the record is shared word by word.
    class SharedSettings {
    public:
        void operator=(const BackLightSettings& settings);
        operator BackLightSettings() const;
        std::atomic<DWORD>& operator[](std::size_t word) {
            return words[word];
        }

    private:
        std::array<std::atomic<DWORD>, 4> words{};
    };

    void read();
    void write(DWORD word2, DWORD word0);

    HANDLE driver;
    SharedSettings current; // as last read
    SharedSettings wanted; // as last sent; words 1 and 3 as they were when the driver was opened
    std::atomic<int> dimLevel = 0;
};
