#pragma once

#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

#include <cstdint>

// The touch buzzer: an observer of the mouse hook that sends one request to the buzzer driver "BZR1:" for each touch.
//
// Create and destroy it on the main thread. It clicks as long as it exists. If the driver is missing, it does nothing.
// A request that fails is not reported. While a request waits in the driver, no code reads the object's data, so the
// object can be destroyed even if the driver hangs.
class TouchBuzzer : public MouseHookObserver {
public:
    // Opens the driver and registers with the mouse hook. `duration` is in ms, `frequency` in Hz. A driver that appears
    // later is not opened.
    TouchBuzzer(std::int32_t duration, std::int32_t frequency);
    TouchBuzzer(const TouchBuzzer&) = delete;
    TouchBuzzer& operator=(const TouchBuzzer&) = delete;
    // Removes itself from the mouse hook, which may wait for a click in progress, and closes the driver.
    ~TouchBuzzer() override;

    // Clicks with the duration and the frequency given to the constructor.
    void notify(int& value) override;
    // Sends one request. The duration is limited to 1000 ms. Returns the duration that was sent, even if the request
    // failed, or -1 without a driver. Any thread may call.
    std::int32_t beep(std::int32_t duration, std::int32_t frequency);

private:
    HANDLE driver;
    std::int32_t durationMs;
    std::int32_t frequencyHz;
};
