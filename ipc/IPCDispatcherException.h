#pragma once

#include "OrvaUtils/Exception.h"

// The window or the message loop of the dispatcher failed, or a handler threw a standard exception. The message is the
// text of the underlying exception.
class IPCDispatcherException : public OrvaUtils::Exception {
public:
    using OrvaUtils::Exception::Exception;
};
