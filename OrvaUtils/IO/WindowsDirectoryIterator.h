#pragma once

#include "OrvaUtils/IO/DirectoryEntry.h"

#include <windows.h>

#include <string>

namespace OrvaUtils::IO {

// Walks what FindFirstFileW finds for a path whose last component is a pattern. A failure ends the walk. Without a
// pattern, in a path that is empty or ends with a separator, there is nothing to walk, and the platform is not asked.
class WindowsDirectoryIterator : public DirectoryIterator {
public:
    explicit WindowsDirectoryIterator(const std::wstring& pathPattern);
    WindowsDirectoryIterator(const WindowsDirectoryIterator&) = delete;
    WindowsDirectoryIterator& operator=(const WindowsDirectoryIterator&) = delete;
    ~WindowsDirectoryIterator() override;

    bool atEnd() const override;
    const DirectoryEntry& current() const override;
    void advance() override;

private:
    void take();
    void close();

    WIN32_FIND_DATAW found{};
    HANDLE search; // INVALID_HANDLE_VALUE at the end
    DirectoryEntry entry;
};

} // namespace OrvaUtils::IO
