#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils {

// A library, or one of its procedures, that the panel does not have.
class LoadLibraryException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils
