#pragma once

#include "OrvaUtils/Exception.h"

// The touch thread of the buzzer did not stop in time. The message is "Failed to terminate monitor thread".
class BuzzerException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
