#include "modules/screensaver/ScreenBackLight.h"

#include "modules/screensaver/ScreenBackLightException.h"

#include <algorithm>

namespace {

constexpr DWORD READ_SETTINGS = 0x01130408;
constexpr DWORD WRITE_SETTINGS = 0x0113040C;
constexpr float FULL_LEVEL = 255.0F;

void tellOfChange() {
    // Made and let go at once: it reaches those alone who have it open.
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"BackLightLevelChangeEvent");
    if (event != nullptr) {
        EventModify(event, EVENT_SET);
        CloseHandle(event);
    }
}

} // namespace

void ScreenBackLight::SharedSettings::operator=(const BackLightSettings& settings) {
    std::copy(settings.begin(), settings.end(), words.begin());
}

ScreenBackLight::SharedSettings::operator BackLightSettings() const {
    BackLightSettings settings{};
    std::copy(words.begin(), words.end(), settings.begin());
    return settings;
}

ScreenBackLight::ScreenBackLight()
    : driver(CreateFileW(L"BKL1:", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS, nullptr)) {
    if (driver == INVALID_HANDLE_VALUE) {
        throw ScreenBackLightException(L"Driver open failed");
    }
    try {
        read();
    } catch (...) {
        CloseHandle(driver);
        throw;
    }
    wanted = static_cast<BackLightSettings>(current);
}

ScreenBackLight::~ScreenBackLight() {
    CloseHandle(driver);
}

void ScreenBackLight::setLevel(float fraction) {
    dimLevel = static_cast<int>(fraction * FULL_LEVEL);
}

void ScreenBackLight::dim() {
    read();
    const auto level = static_cast<DWORD>(dimLevel.load());
    write(level, level);
}

void ScreenBackLight::restore() {
    write(current[2], current[0]);
}

void ScreenBackLight::read() {
    BackLightSettings settings{};
    DWORD returned = 0;
    if (!DeviceIoControl(driver, READ_SETTINGS, nullptr, 0, &settings, sizeof settings, &returned, nullptr)) {
        throw ScreenBackLightException(L"Get back light settings failed");
    }
    current = settings;
}

void ScreenBackLight::write(DWORD word2, DWORD word0) {
    wanted[2] = word2;
    wanted[0] = word0;
    BackLightSettings settings = wanted;
    DWORD returned = 0;
    if (!DeviceIoControl(driver, WRITE_SETTINGS, &settings, sizeof settings, nullptr, 0, &returned, nullptr)) {
        throw ScreenBackLightException(L"Cannot update driver settings");
    }
    tellOfChange();
}
