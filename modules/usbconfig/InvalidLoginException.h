#pragma once

#include "OrvaUtils/Exception.h"

// A login was refused. No code throws this exception, because logins are not checked.
class InvalidLoginException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
