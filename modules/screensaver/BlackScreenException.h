#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The black window could not be made.
class BlackScreenException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
