#pragma once

#include "OrvaUtils/Exception.h"

// The eMMC monitor could not be created, started or stopped. The message is "Cannot create event", "Cannot create
// thread" or "Failed to terminate monitor thread".
class EMMCException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
