#pragma once

#include "OrvaUtils/Exception.h"

// The screen saver could not be set up, driven or stopped; the derived classes say which part of it.
class ScreenSaverException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
