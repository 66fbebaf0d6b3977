#include "OrvaUtils/IO/IFileSystem.h"

#include "OrvaUtils/IO/FileSystemException.h"
#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"

#include <set>
#include <vector>

namespace OrvaUtils::IO {

namespace {

constexpr wchar_t INVALID_DIRECTORY_NAME[] = L"Invalid directory name";

// A leftover must not be renamed again: its name would grow with every attempt.
bool wasRenamedAway(const std::wstring& name) {
    return name.starts_with(RENAME_AWAY_PREFIX);
}

} // namespace

bool IFileSystem::moveFileReplacing(const std::wstring& source, const std::wstring& destination) {
    if (isFile(destination)) {
        // MoveFileW never replaces an existing file.
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
    // The result is ignored: an existing destination is no error, and without a parent all copies below fail. The
    // destination is created even if no entry matches the pattern.
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
    // This value stays if the directory can be deleted.
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
    // The entries are collected first: a rename adds an entry to the directory, which a running listing could find.
    std::vector<DirectoryEntry> entries;
    for (const auto it = createDirectoryIterator(path, pattern); !it->atEnd(); it->advance()) {
        entries.push_back(it->current());
    }
    // The platform matches the excluded pattern, too: a second listing finds the names to keep.
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
            // The name has the prefix already, so a directory in use is not renamed again.
            deleteDirectoryOrRename(full);
        } else {
            deleteFile(full);
        }
    }
}

// Moves a file or directory to the first free name with the prefix. Returns that name, whether or not the move
// succeeded.
std::wstring IFileSystem::renameAway(const std::wstring& path) {
    const std::wstring stem = getDirectoryPart(path) + getSeparator() + RENAME_AWAY_PREFIX;
    const std::wstring name = getFileName(path, L"");
    std::wstring candidate = stem + name;
    // Leftovers of earlier renames keep their names until a clean-up, so the counter looks for a free name.
    for (std::int64_t n = 1; isFile(candidate) || isDirectory(candidate); ++n) {
        candidate = stem + decimal(n) + L"_" + name;
    }
    moveFile(path, candidate);
    return candidate;
}

} // namespace OrvaUtils::IO
