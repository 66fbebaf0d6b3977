#pragma once

#include "OrvaUtils/Exception.h"

// The watch over devices could not be set up or stopped.
class UsbDeviceException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
