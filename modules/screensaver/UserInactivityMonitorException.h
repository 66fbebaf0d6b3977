#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The watch over the user's activity could not be set up or stopped.
class UserInactivityMonitorException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
