#include "modules/screensaver/ScreenBackLight.h"

#include "modules/screensaver/ScreenBackLightException.h"

namespace {

// The IOCTLs of the driver: device type 0x0113, functions 0x102 and 0x103, buffered, any access.
constexpr DWORD READ_SETTINGS = 0x01130408;
constexpr DWORD WRITE_SETTINGS = 0x0113040C;
// The level of the fraction 1.
constexpr float FULL_LEVEL = 255.0F;

void tellOfChange() {
    // Creates, signals and closes the event: only threads that already have it open wake up.
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, L"BackLightLevelChangeEvent");
    if (event != nullptr) {
        EventModify(event, EVENT_SET);
        CloseHandle(event);
    }
}

} // namespace

ScreenBackLight::ScreenBackLight()
    : driver(CreateFileW(L"BKL1:", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS, nullptr)) {
    if (driver == INVALID_HANDLE_VALUE) {
        throw ScreenBackLightException(L"Driver open failed");
    }
    try {
        opened = read();
    } catch (...) {
        // The destructor does not run for an object whose constructor throws.
        CloseHandle(driver);
        throw;
    }
}

ScreenBackLight::~ScreenBackLight() {
    CloseHandle(driver);
}

void ScreenBackLight::setLevel(float fraction) {
    dimLevel = static_cast<int>(fraction * FULL_LEVEL);
}

void ScreenBackLight::dim() {
    // The user may have changed the levels since the last read; `restore` needs them.
    read();
    const auto level = static_cast<DWORD>(dimLevel.load());
    write(level, level);
}

void ScreenBackLight::restore() {
    write(level2, level0);
}

BackLightSettings ScreenBackLight::read() {
    // An answer shorter than the record keeps these values in its missing words.
    BackLightSettings settings{level0, opened[1], level2, opened[3]};
    DWORD returned = 0;
    if (!DeviceIoControl(driver, READ_SETTINGS, nullptr, 0, &settings, sizeof settings, &returned, nullptr)) {
        throw ScreenBackLightException(L"Get back light settings failed");
    }
    level0 = settings[0];
    level2 = settings[2];
    return settings;
}

void ScreenBackLight::write(DWORD word2, DWORD word0) {
    BackLightSettings wanted{word0, opened[1], word2, opened[3]};
    DWORD returned = 0;
    if (!DeviceIoControl(driver, WRITE_SETTINGS, &wanted, sizeof wanted, nullptr, 0, &returned, nullptr)) {
        throw ScreenBackLightException(L"Cannot update driver settings");
    }
    tellOfChange();
}
