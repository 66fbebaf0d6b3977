#pragma once

#include "OrvaUtils/Exception.h"

// The monitor of block devices could not be created or stopped, or its thread gets no notifications. The message is
// "Cannot create event", "Generic Exception", "Request device notifications failed" or "Failed to terminate monitor
// thread".
class UsbDeviceException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
