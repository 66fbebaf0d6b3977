#include "OrvaUtils/IO/IFileSystem.h"

#include "OrvaUtils/IO/FileSystemException.h"
#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"

#include <set>
#include <vector>

namespace OrvaUtils::IO {

namespace {

constexpr wchar_t INVALID_DIRECTORY_NAME[] = L"Invalid directory name";

bool wasRenamedAway(const std::wstring& name) {
    return name.starts_with(RENAME_AWAY_PREFIX);
}

} // namespace

bool IFileSystem::moveFileReplacing(const std::wstring& source, const std::wstring& destination) {
    if (isFile(destination)) {
        deleteOrRenameFile(destination);
    }
    return moveFile(source, destination);
}

bool IFileSystem::deleteOrRenameFile(const std::wstring& path) {
    std::wstring discarded;
    return deleteOrRenameFile(path, discarded);
}

bool IFileSystem::deleteOrRenameFile(const std::wstring& path, std::wstring& newName) {
    if (!deleteFile(path) && !wasRenamedAway(getFileName(path, L""))) {
        newName = renameAway(path);
    }
    return true;
}

void IFileSystem::copyDirectory(const std::wstring& destination, const std::wstring& source, bool overwrite,
                                const std::wstring& pattern) {
    if (source.empty()) {
        throw FileSystemException(L"Invalid source directory");
    }
    if (destination.empty()) {
        throw FileSystemException(L"Invalid destination directory");
    }
    const std::unique_ptr<DirectoryIterator> it = createDirectoryIterator(source, pattern);
    createDirectory(destination);
    std::wstring from = combinePath(source, L"");
    std::wstring to = combinePath(destination, L"");
    for (const std::size_t fromLength = from.size(), toLength = to.size(); !it->atEnd(); it->advance()) {
        const DirectoryEntry& entry = it->current();
        from.replace(fromLength, std::wstring::npos, entry.name);
        to.replace(toLength, std::wstring::npos, entry.name);
        if (entry.kind == DirectoryEntry::Kind::File) {
            copyFileReplacing(from, to, overwrite);
        } else if (entry.kind == DirectoryEntry::Kind::Directory) {
            copyDirectory(to, from, overwrite, pattern);
        }
    }
}

bool IFileSystem::deleteDirectoryOrRename(const std::wstring& path) {
    std::wstring discarded;
    return deleteDirectoryOrRename(path, discarded);
}

bool IFileSystem::deleteDirectoryOrRename(const std::wstring& path, std::wstring& newName) {
    if (path.empty()) {
        throw FileSystemException(INVALID_DIRECTORY_NAME);
    }
    newName = path;
    deleteDirectoryContents(path, L"*", L"");
    if (!removeDirectory(path) && !wasRenamedAway(getFileName(path, L""))) {
        newName = renameAway(path);
    }
    return true;
}

void IFileSystem::deleteDirectoryContents(const std::wstring& path, const std::wstring& pattern,
                                          const std::wstring& excludedPattern) {
    if (path.empty()) {
        throw FileSystemException(INVALID_DIRECTORY_NAME);
    }
    Logger::instance().writeParts(LogLevel::Debug, {L"Deleting directory ", path});
    std::vector<DirectoryEntry> entries;
    for (const auto it = createDirectoryIterator(path, pattern); !it->atEnd(); it->advance()) {
        entries.push_back(it->current());
    }
    std::set<std::wstring> excluded;
    for (const auto it = createDirectoryIterator(path, excludedPattern); !it->atEnd(); it->advance()) {
        excluded.insert(it->current().name);
    }
    std::wstring discarded;
    for (const DirectoryEntry& entry : entries) {
        if (excluded.contains(entry.name)) {
            continue;
        }
        const std::wstring full = combinePath(path, entry.name);
        if (entry.kind == DirectoryEntry::Kind::File) {
            deleteOrRenameFile(full, discarded);
        } else {
            deleteDirectoryOrRename(full, discarded);
        }
    }
}

void IFileSystem::cleanupDirectory(const std::wstring& path) {
    if (path.empty()) {
        throw FileSystemException(INVALID_DIRECTORY_NAME);
    }
    Logger::instance().writeParts(LogLevel::Debug, {L"Cleaning up directory ", path});
    for (const auto it = createDirectoryIterator(path, L"*"); !it->atEnd(); it->advance()) {
        const DirectoryEntry& entry = it->current();
        if (!wasRenamedAway(entry.name)) {
            continue;
        }
        const std::wstring full = combinePath(path, entry.name);
        if (entry.kind == DirectoryEntry::Kind::Directory) {
            deleteDirectoryOrRename(full);
        } else {
            deleteFile(full);
        }
    }
}

// Moves a file or directory to the first free name and returns that, whether or not the platform moved it.
std::wstring IFileSystem::renameAway(const std::wstring& path) {
    const std::wstring stem = getDirectoryPart(path) + getSeparator() + RENAME_AWAY_PREFIX;
    const std::wstring name = getFileName(path, L"");
    std::wstring candidate = stem + name;
    for (std::int64_t n = 1; isFile(candidate) || isDirectory(candidate); ++n) {
        candidate = stem + decimal(n) + L"_" + name;
    }
    moveFile(path, candidate);
    return candidate;
}

} // namespace OrvaUtils::IO
