#include "modules/buzzer/TouchBuzzer.h"

#include "modules/buzzer/MouseHook.h"

#include <algorithm>

namespace {

// The IOCTL of the driver that sounds the buzzer.
constexpr DWORD BEEP = 0x01012EF4;
constexpr std::int32_t LONGEST = 1000; // ms

// The input of the IOCTL.
struct Request {
    std::uint32_t frequency; // Hz
    std::uint32_t duration; // ms
};
static_assert(sizeof(Request) == 8);

// The result of CreateFileW is examined only here: without a driver the buzzer is silent.
bool isOpen(HANDLE driver) {
    return driver != nullptr && driver != INVALID_HANDLE_VALUE;
}

} // namespace

TouchBuzzer::TouchBuzzer(std::int32_t duration, std::int32_t frequency)
    : driver(CreateFileW(L"BZR1:", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                         nullptr)),
      durationMs(duration),
      frequencyHz(frequency) {
    // The hook may call `notify` from now on, so this is the last step of the constructor.
    MouseHook::instance().addObserver(this);
}

TouchBuzzer::~TouchBuzzer() {
    // The removal waits for a click in progress, which uses the driver handle.
    MouseHook::instance().removeObserver(this);
    if (isOpen(driver)) {
        CloseHandle(driver);
    }
}

void TouchBuzzer::notify(int&) {
    beep(durationMs, frequencyHz);
}

std::int32_t TouchBuzzer::beep(std::int32_t duration, std::int32_t frequency) {
    if (!isOpen(driver)) {
        return -1;
    }
    // The function works with its own copies from here on: the object may be destroyed while the driver does not
    // answer.
    duration = std::min(duration, LONGEST);
    Request request{static_cast<std::uint32_t>(frequency), static_cast<std::uint32_t>(duration)};
    DWORD returned = 0;
    DeviceIoControl(driver, BEEP, &request, sizeof request, nullptr, 0, &returned, nullptr);
    return duration;
}
