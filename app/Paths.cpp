#include "app/Paths.h"

#include <windows.h>

namespace Paths {

std::wstring runningExecutable() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

} // namespace Paths
