#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils {

// A question about the device has no answer.
//
// The message is "Unexpected platform type" or "Guid not present".
class PlatformInfoException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils
