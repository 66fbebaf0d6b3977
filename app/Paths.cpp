#include "app/Paths.h"

#include <windows.h>

namespace Paths {

std::wstring runningExecutable() {
    wchar_t path[MAX_PATH];
    // GetModuleFileNameW returns the number of characters, or 0 for a failure.
    return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

} // namespace Paths
