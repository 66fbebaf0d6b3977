#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The backlight's driver is missing or refuses.
class ScreenBackLightException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
