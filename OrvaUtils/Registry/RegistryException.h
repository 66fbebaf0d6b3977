#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::Registry {

// A failure of any operation on the registry; the messages do not tell which key or value, but for openKey's.
class RegistryException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::Registry
