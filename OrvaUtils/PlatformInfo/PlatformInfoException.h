#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils {

// Something was asked about the device that there is no answer to.
class PlatformInfoException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils
