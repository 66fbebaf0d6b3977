#pragma once

#include "OrvaUtils/Exception.h"

// A login that was refused.
class InvalidLoginException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
