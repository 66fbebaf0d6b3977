#pragma once

#include "modules/buzzer/MouseHookObserver.h"

#include <windows.h>

#include <cstdint>

// Clicks at each touch for as long as it lives: an observer of the MouseHook that sends one request to the buzzer's
// driver, "BZR1:". A panel without it stays silent.
//
// Made and destroyed on the main thread; `beep` may be called on any. Nothing is read of the object once the driver has
// the request, so that it can be destroyed while a driver does not answer.
class TouchBuzzer : public MouseHookObserver {
public:
    // Duration in ms, frequency in Hz. Opens the driver once, for its whole life.
    TouchBuzzer(std::int32_t duration, std::int32_t frequency);
    TouchBuzzer(const TouchBuzzer&) = delete;
    TouchBuzzer& operator=(const TouchBuzzer&) = delete;
    ~TouchBuzzer() override;

    void notify(int& value) override;
    // The duration that was asked for, at most 1000 ms, whatever the driver says; -1 without a driver.
    std::int32_t beep(std::int32_t duration, std::int32_t frequency);

private:
    HANDLE driver;
    std::int32_t durationMs;
    std::int32_t frequencyHz;
};
