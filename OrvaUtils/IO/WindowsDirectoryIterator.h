#pragma once

#include "OrvaUtils/IO/DirectoryEntry.h"

#include <windows.h>

#include <string>

namespace OrvaUtils::IO {

// Lists a directory with FindFirstFileW and FindNextFileW.
//
// Only one thread may use the iterator. A platform failure ends the listing without a report. The destructor closes the
// search.
class WindowsDirectoryIterator : public DirectoryIterator {
public:
    // The last component of the path is a pattern with "*" and "?". An empty path, or a path that ends with a
    // separator, has no pattern: the listing is empty and the platform is not called.
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
    HANDLE search; // INVALID_HANDLE_VALUE at the end of the listing
    DirectoryEntry entry;
};

} // namespace OrvaUtils::IO
