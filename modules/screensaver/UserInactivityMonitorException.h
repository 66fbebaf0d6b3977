#pragma once

#include "modules/screensaver/ScreenSaverException.h"

// The monitor of user activity could not be created or stopped. The message is "Cannot create event" or "Failed to
// terminate monitor thread".
class UserInactivityMonitorException : public ScreenSaverException {
public:
    using ScreenSaverException::ScreenSaverException;
};
