#pragma once

#include "OrvaUtils/Exception.h"

// A configuration file says something that it must not say.
class ConfigurationException : public OrvaUtils::Exception {
public:
    using Exception::Exception;
};
