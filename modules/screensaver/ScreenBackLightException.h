#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The backlight driver is missing, or a request to it failed. The message is "Driver open failed", "Get back light
// settings failed" or "Cannot update driver settings".
class ScreenBackLightException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
