#pragma once

#include "OrvaUtils/Exception.h"

// A configuration file is malformed. Configuration.h lists the messages.
class ConfigurationException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
