#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::Registry {

// An operation on the registry failed.
//
// The headers Registry.h, Reading.h, Writing.h and Comparing.h list the messages. Only the message of `openKey` names
// the key; no message names the value or the platform's error.
class RegistryException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::Registry
