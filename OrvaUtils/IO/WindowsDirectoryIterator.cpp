#include "OrvaUtils/IO/WindowsDirectoryIterator.h"

namespace OrvaUtils::IO {

WindowsDirectoryIterator::WindowsDirectoryIterator(const std::wstring& pathPattern)
    // An empty pattern leaves a path that is empty or ends with a separator. The listing is then empty.
    : search(pathPattern.empty() || pathPattern.ends_with(L'\\') ? INVALID_HANDLE_VALUE
                                                                 : FindFirstFileW(pathPattern.c_str(), &found)) {
    if (search != INVALID_HANDLE_VALUE) {
        take();
    }
}

WindowsDirectoryIterator::~WindowsDirectoryIterator() {
    close();
}

bool WindowsDirectoryIterator::atEnd() const {
    return search == INVALID_HANDLE_VALUE;
}

const DirectoryEntry& WindowsDirectoryIterator::current() const {
    return entry;
}

void WindowsDirectoryIterator::advance() {
    if (FindNextFileW(search, &found)) {
        take();
    } else {
        close();
    }
}

void WindowsDirectoryIterator::take() {
    entry.name = found.cFileName;
    entry.kind = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? DirectoryEntry::Kind::Directory
                                                                          : DirectoryEntry::Kind::File;
}

void WindowsDirectoryIterator::close() {
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
        search = INVALID_HANDLE_VALUE;
    }
}

} // namespace OrvaUtils::IO
