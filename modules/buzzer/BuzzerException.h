#pragma once

#include "OrvaUtils/Exception.h"

// The touch buzzer's notification thread could not be stopped.
class BuzzerException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
