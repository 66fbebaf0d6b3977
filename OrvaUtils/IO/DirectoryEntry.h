#pragma once

#include "OrvaUtils/Iterator.h"

#include <cstdint>
#include <string>

namespace OrvaUtils::IO {

// One entry of a directory listing.
struct DirectoryEntry {
    enum class Kind : std::int32_t { Directory = 0, File = 1 };

    std::wstring name; // without its directory
    Kind kind = Kind::File;
};

using DirectoryIterator = Iterator<DirectoryEntry>;

} // namespace OrvaUtils::IO
