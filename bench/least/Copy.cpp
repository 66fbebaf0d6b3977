#include "bench/least/Least.h"

#include <cwchar>
#include <iterator>

void leastCopy() {
    wchar_t from[MAX_PATH] = DISK L"\\Tarvex\\";
    wchar_t to[MAX_PATH] = INSTALLATION L"\\";
    constexpr std::size_t fromLength = std::size(DISK L"\\Tarvex\\") - 1;
    constexpr std::size_t toLength = std::size(INSTALLATION L"\\") - 1;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(DISK L"\\Tarvex\\*", &found);
    CreateDirectoryW(INSTALLATION, nullptr);
    do {
        const std::size_t size = std::wcslen(found.cFileName) + 1;
        std::wmemcpy(from + fromLength, found.cFileName, size);
        std::wmemcpy(to + toLength, found.cFileName, size);
        if (GetFileAttributesW(to) == INVALID_FILE_ATTRIBUTES)
            CopyFileW(from, to, TRUE);
    } while (FindNextFileW(search, &found));
    FindClose(search);
}
