#pragma once

#include "OrvaUtils/Iterator.h"

#include <cstdint>
#include <string>

namespace OrvaUtils::IO {

// One entry of a directory listing: a file or a subdirectory.
struct DirectoryEntry {
    enum class Kind : std::int32_t { Directory = 0, File = 1 };

    std::wstring name; // The name has no directory part.
    Kind kind = Kind::File;
};

// Walks the entries of one directory. The order is the platform's.
using DirectoryIterator = Iterator<DirectoryEntry>;

} // namespace OrvaUtils::IO
