#include "OrvaUtils/IO/WindowsFileSystem.h"

#include "OrvaUtils/IO/WindowsDirectoryIterator.h"
#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"

#include <windows.h>

#include <algorithm>

namespace OrvaUtils::IO {

namespace {

constexpr wchar_t SEPARATOR = L'\\';

} // namespace

bool WindowsFileSystem::isFile(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool WindowsFileSystem::isDirectory(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

wchar_t WindowsFileSystem::getSeparator() {
    return SEPARATOR;
}

std::wstring WindowsFileSystem::normalizePath(const std::wstring& path) {
    std::wstring normal;
    for (const wchar_t character : path) {
        if (character != SEPARATOR || !normal.ends_with(SEPARATOR)) {
            normal += character;
        }
    }
    if (normal.ends_with(SEPARATOR)) {
        normal.pop_back();
    }
    return normal;
}

std::wstring WindowsFileSystem::combinePath(const std::wstring& first, const std::wstring& second) {
    std::wstring path;
    path.reserve(first.size() + 1 + second.size());
    path = first;
    if (!path.empty() && !path.ends_with(SEPARATOR)) {
        path += SEPARATOR;
    }
    const std::size_t begin = second.find_first_not_of(SEPARATOR);
    return begin == std::wstring::npos ? path : path.append(second, begin);
}

std::wstring WindowsFileSystem::getDirectoryPart(const std::wstring& path) {
    const std::size_t last = path.rfind(SEPARATOR);
    return last == std::wstring::npos ? std::wstring() : path.substr(0, last);
}

std::wstring WindowsFileSystem::getFileName(const std::wstring& path, const std::wstring& suffix) {
    // Without a separator `rfind` returns npos, and npos + 1 is 0: the name is the whole path.
    std::wstring name = path.substr(path.rfind(SEPARATOR) + 1);
    if (name.ends_with(suffix)) {
        name.resize(name.size() - suffix.size());
    }
    return name;
}

std::wstring WindowsFileSystem::toNativeSeparators(const std::wstring& path) {
    std::wstring native = path;
    std::replace(native.begin(), native.end(), L'/', SEPARATOR);
    return native;
}

bool WindowsFileSystem::createDirectory(const std::wstring& path) {
    return CreateDirectoryW(path.c_str(), nullptr) != FALSE;
}

bool WindowsFileSystem::createDirectories(const std::wstring& path) {
    bool created = false;
    // The search begins at 1: a separator in front belongs to the first name.
    for (std::size_t i = 1; i <= path.size(); ++i) {
        if (i < path.size() && path[i] != SEPARATOR) {
            continue;
        }
        const std::wstring prefix = path.substr(0, i);
        if (!isDirectory(prefix)) {
            created = createDirectory(prefix);
            if (!created) {
                break;
            }
        }
    }
    // The result is deliberately false if there was nothing to create.
    return created;
}

bool WindowsFileSystem::isSubPath(const std::wstring& parent, const std::wstring& path) {
    const std::wstring start = normalizePath(parent);
    const std::wstring whole = normalizePath(path);
    // Deliberate: the text may be cut within a name, so \A\BC lies under \A\B.
    return equalIgnoringCase(start, whole.substr(0, start.size()));
}

std::unique_ptr<DirectoryIterator> WindowsFileSystem::createDirectoryIterator(const std::wstring& directory,
                                                                              const std::wstring& pattern) {
    return std::make_unique<WindowsDirectoryIterator>(combinePath(directory, pattern));
}

bool WindowsFileSystem::copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite) {
    return CopyFileW(source.c_str(), destination.c_str(), overwrite ? FALSE : TRUE) != FALSE;
}

bool WindowsFileSystem::copyFileReplacing(const std::wstring& source, const std::wstring& destination, bool overwrite) {
    if (isFile(destination)) {
        if (!overwrite) {
            return false;
        }
        // CopyFileW fails on a read-only or busy destination.
        deleteOrRenameFile(destination);
    }
    return copyFile(source, destination, overwrite);
}

bool WindowsFileSystem::moveFile(const std::wstring& source, const std::wstring& destination) {
    return MoveFileW(source.c_str(), destination.c_str()) != FALSE;
}

bool WindowsFileSystem::deleteFile(const std::wstring& path) {
    Logger::instance().writeParts(LogLevel::Debug, {L"Deleting file ", path});
    const DWORD attributes = GetFileAttributesW(path.c_str());
    // Deliberate: if the attributes cannot be read, all bits are set and the call writes all of them except this bit.
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesW(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    }
    return DeleteFileW(path.c_str()) != FALSE;
}

bool WindowsFileSystem::removeDirectory(const std::wstring& path) {
    return RemoveDirectoryW(path.c_str()) != FALSE;
}

bool WindowsFileSystem::createShortcut(const std::wstring& shortcutPath, const std::wstring& target,
                                       const std::wstring& arguments) {
    // SHCreateShortcut takes pointers to writable text, so it gets copies.
    std::wstring shortcut = shortcutPath;
    std::wstring command = target.starts_with(L'"') ? target : L'"' + target + L'"';
    if (!arguments.empty()) {
        command += L' ' + arguments;
    }
    SHCreateShortcut(shortcut.data(), command.data());
    // Deliberate: the result of SHCreateShortcut does not matter.
    return true;
}

IFileSystem& getFileSystem() {
    // Deliberate: the destructor of this object runs at process exit, even if a thread still runs.
    static const std::unique_ptr<IFileSystem> fileSystem(new WindowsFileSystem);
    return *fileSystem;
}

} // namespace OrvaUtils::IO
