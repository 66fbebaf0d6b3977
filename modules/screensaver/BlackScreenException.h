#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The black window could not be created. The message is "Cannot register class" or "Cannot create black screen window".
class BlackScreenException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
