#pragma once

#include "OrvaUtils/Exception.h"

// The dispatcher's window or message loop failed.
class IPCDispatcherException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
