#pragma once

#include "OrvaUtils/Exception.h"

// The base class of all exceptions of the screen saver. The derived classes name the part that failed.
class ScreenSaverException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
