#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils {

// A library cannot be loaded, or lacks a procedure. The message names the library or the procedure.
class LoadLibraryException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils
