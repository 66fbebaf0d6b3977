#pragma once

#include "OrvaUtils/Exception.h"

// A configuration file has a fault. Configuration lists the messages.
class ConfigurationException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
