#pragma once

#include "OrvaUtils/Exception.h"

namespace OrvaUtils::IO {

// An operation on a directory tree got an empty path.
//
// The message is "Invalid source directory", "Invalid destination directory" or "Invalid directory name". Operations on
// single files do not throw: they return false.
class FileSystemException : public Exception {
public:
    using Exception::Exception;
};

} // namespace OrvaUtils::IO
