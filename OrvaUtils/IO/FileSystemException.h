#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::IO {

// A bad argument of an operation on a directory tree.
class FileSystemException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::IO
