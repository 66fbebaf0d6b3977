// Operations on files and folders by name: copy, move, delete, attributes, search, shortcuts.
#include "platform/panel/Gate.h"
#include "platform/panel/Paths.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/FileTimes.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Storage.h"

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

using namespace panel;

namespace {

constexpr std::size_t shortcutSize = 256; // characters of a target, including the terminating zero

// Returns the error of deleting or replacing an existing file, or 0.
DWORD protection(const Image& image, const Place& place) {
    if (!place.isFile() || place.isReadOnly())
        return ERROR_ACCESS_DENIED;
    switch (objects::busy(image, place.status.st_dev, place.status.st_ino)) {
    case objects::Busy::running:
        return ERROR_ACCESS_DENIED;
    case objects::Busy::open:
        return ERROR_SHARING_VIOLATION;
    case objects::Busy::no:
        break;
    }
    return 0;
}

bool copyContent(int from, int to, off_t size) {
    while (size > 0) {
        const ssize_t copied = sendfile(to, from, nullptr, static_cast<std::size_t>(size));
        if (copied <= 0)
            return false;
        size -= copied;
    }
    return true;
}

// Replaces the destination by a new file with the attributes and the write time of the source. The new inode keeps
// processes that run from the old file unharmed.
DWORD copyOnHost(const Place& source, const Place& destination) {
    const int from = open(source.host.c_str(), O_RDONLY | O_CLOEXEC);
    if (from < 0)
        return ERROR_ACCESS_DENIED;
    unlink(destination.host.c_str());
    const int to = open(destination.host.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    DWORD error = to < 0 ? ERROR_ACCESS_DENIED : 0;
    if (to >= 0) {
        if (!copyContent(from, to, source.status.st_size))
            error = ERROR_DISK_FULL;
        fchmod(to, source.status.st_mode & 07777);
        const timespec times[] = {source.status.st_mtim, source.status.st_mtim};
        futimens(to, times);
        close(to);
    }
    close(from);
    return error;
}

DWORD copyFile(Image& image, const Place& source, const Place& destination, bool isProtectedThere, bool failIfExists) {
    if (!source.exists)
        return source.error;
    if (!source.isFile())
        return ERROR_ACCESS_DENIED;
    for (const ObjectRecord& other : usedObjects(image))
        if (other.type == ObjectType::file && other.device == source.status.st_dev &&
            other.inode == source.status.st_ino && !(other.share & FILE_SHARE_READ))
            return ERROR_SHARING_VIOLATION;
    if (destination.exists) {
        if (destination.isFile() && failIfExists)
            return ERROR_FILE_EXISTS;
        if (destination.status.st_ino == source.status.st_ino && destination.status.st_dev == source.status.st_dev)
            return ERROR_SHARING_VIOLATION;
        if (isProtectedThere)
            return ERROR_WRITE_PROTECT;
        if (const DWORD error = protection(image, destination))
            return error;
    } else if (!destination.canBeMade()) {
        return destination.error;
    }
    if (isProtectedThere)
        return ERROR_WRITE_PROTECT;
    nameMade(image, destination);
    return copyOnHost(source, destination);
}

// Returns whether the place is the panel's root or lies directly in it, as volumes do.
bool isTop(const std::string& root, const Place& place) {
    return place.host == root + "/fs" || place.host.rfind('/') == root.size() + 3;
}

DWORD moveFile(Image& image, const std::string& root, const std::string& from, const std::string& to) {
    const Place source = locate(image, root, from);
    const Place destination = locate(image, root, to);
    if (!source.exists)
        return source.error;
    const bool sameFile = destination.exists && destination.status.st_dev == source.status.st_dev &&
                          destination.status.st_ino == source.status.st_ino;
    if (destination.exists && !(sameFile && equalCaseBlind(from, to)))
        return ERROR_ALREADY_EXISTS;
    if (!destination.exists && !destination.canBeMade())
        return destination.error;
    if (isProtected(image, from) || isProtected(image, to))
        return ERROR_WRITE_PROTECT;
    const std::string volume = volumeOf(image, from);
    if (!volume.empty() && isTop(root, source))
        return ERROR_ACCESS_DENIED;
    // Between volumes a file is copied and deleted; a folder cannot move.
    if (volume != volumeOf(image, to)) {
        if (source.isDirectory())
            return ERROR_NOT_SAME_DEVICE;
        if (const DWORD error = protection(image, source))
            return error;
        if (const DWORD error = copyFile(image, source, destination, false, true))
            return error;
        return unlink(source.host.c_str()) == 0 ? 0 : ERROR_ACCESS_DENIED;
    }
    Place target = destination;
    // Only the case of the name changes: `destination` has the old spelling.
    if (sameFile)
        target.host = target.host.substr(0, target.host.rfind('/') + 1) + std::string(fileName(to));
    nameMade(image, target);
    if (rename(source.host.c_str(), target.host.c_str()) != 0)
        return ERROR_ACCESS_DENIED;
    storage::renamed(image, source.host.substr(root.size() + 1), target.host.substr(root.size() + 1));
    return 0;
}

DWORD attributesOf(const struct stat& status) {
    if (S_ISDIR(status.st_mode))
        return FILE_ATTRIBUTE_DIRECTORY;
    return status.st_mode & S_IWUSR ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_READONLY;
}

// Returns all matching entries, sorted by name.
std::vector<Found> search(Image& image, const std::string& root, const std::string& path) {
    std::vector<Found> found;
    const std::string pattern(fileName(path));
    const std::string folder =
        path.size() > pattern.size() + 1 ? path.substr(0, path.size() - pattern.size() - 1) : "\\";
    Lock lock(image);
    const Place place = locate(image, root, folder);
    lock.release();
    DIR* directory = place.isDirectory() ? opendir(place.host.c_str()) : nullptr;
    if (!directory)
        return found;
    while (const dirent* entry = readdir(directory)) {
        const std::string name = entry->d_name;
        const bool hidden = name == "." || name == ".." || name.find_first_of("\\:*?\"<>|") != std::string::npos;
        if (!hidden && matches(pattern, name))
            found.push_back({name, place.host + '/' + name, place.host == root + "/fs"});
    }
    closedir(directory);
    std::sort(found.begin(), found.end(),
              [](const Found& first, const Found& second) { return fold(first.name) < fold(second.name); });
    return found;
}

// Stores the next entry that still exists. Returns false at the end.
bool nextFound(LocalObject& local, WIN32_FIND_DATAW* data) {
    while (local.nextFound < local.found.size()) {
        const Found& entry = local.found[local.nextFound++];
        struct stat status {};
        if (!statusOf(entry.hostPath, entry.top, status))
            continue;
        *data = {};
        data->dwFileAttributes = attributesOf(status);
        data->ftCreationTime = data->ftLastAccessTime = data->ftLastWriteTime = fileTime(status.st_mtim);
        const auto size = static_cast<std::uint64_t>(S_ISREG(status.st_mode) ? status.st_size : 0);
        data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
        data->nFileSizeLow = static_cast<DWORD>(size);
        toWide(entry.name, data->cFileName, MAX_PATH);
        return true;
    }
    return false;
}

bool isSearch(Gate& gate, HANDLE handle) {
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(handle));
    return slot && objects::at(gate.image(), slot).type == ObjectType::search;
}

// Returns TRUE for error 0, and FALSE with the error otherwise.
BOOL answer(Gate& gate, DWORD error) {
    return error ? gate.fails(FALSE, error) : gate.done(TRUE);
}

} // namespace

BOOL CopyFileW(LPCWSTR source, LPCWSTR destination, BOOL failIfExists) noexcept {
    Gate gate(Function::CopyFileW, source, destination, failIfExists);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const std::string& root = gate.runtime.directory();
    const Lock lock(gate.image());
    const std::string to = toUtf8(destination);
    return answer(gate, copyFile(gate.image(), locate(gate.image(), root, toUtf8(source)),
                                 locate(gate.image(), root, to), isProtected(gate.image(), to), failIfExists != FALSE));
}

BOOL MoveFileW(LPCWSTR source, LPCWSTR destination) noexcept {
    Gate gate(Function::MoveFileW, source, destination);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    return answer(gate, moveFile(gate.image(), gate.runtime.directory(), toUtf8(source), toUtf8(destination)));
}

BOOL DeleteFileW(LPCWSTR path) noexcept {
    Gate gate(Function::DeleteFileW, path);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const std::string name = toUtf8(path);
    const Place place = locate(gate.image(), gate.runtime.directory(), name);
    if (!place.exists)
        return gate.fails(FALSE, place.error);
    if (isProtected(gate.image(), name))
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    if (const DWORD error = protection(gate.image(), place))
        return gate.fails(FALSE, error);
    return answer(gate, unlink(place.host.c_str()) == 0 ? 0 : ERROR_ACCESS_DENIED);
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) noexcept {
    Gate gate(Function::CreateDirectoryW, path);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const std::string name = toUtf8(path);
    const Place place = locate(gate.image(), gate.runtime.directory(), name);
    if (place.exists || !place.canBeMade())
        return gate.fails(FALSE, place.exists ? ERROR_ALREADY_EXISTS : place.error);
    if (isProtected(gate.image(), name))
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    nameMade(gate.image(), place);
    if (mkdir(place.host.c_str(), 0755) != 0)
        return gate.fails(FALSE, ERROR_ACCESS_DENIED);
    setWriteTime(place.host, clock::date(gate.image()));
    return gate.done(TRUE);
}

BOOL RemoveDirectoryW(LPCWSTR path) noexcept {
    Gate gate(Function::RemoveDirectoryW, path);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const std::string name = toUtf8(path);
    const Place place = locate(gate.image(), gate.runtime.directory(), name);
    if (!place.isDirectory())
        return gate.fails(FALSE, place.exists ? ERROR_PATH_NOT_FOUND : place.error);
    if (isTop(gate.runtime.directory(), place) && !volumeOf(gate.image(), name).empty())
        return gate.fails(FALSE, ERROR_ACCESS_DENIED);
    if (isProtected(gate.image(), name))
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    return answer(gate, rmdir(place.host.c_str()) == 0 ? 0 : ERROR_DIR_NOT_EMPTY);
}

DWORD GetFileAttributesW(LPCWSTR path) noexcept {
    Gate gate(Function::GetFileAttributesW, path);
    if (gate.faulted())
        return gate.fault<DWORD>();
    const Lock lock(gate.image());
    const Place place = locate(gate.image(), gate.runtime.directory(), toUtf8(path));
    if (!place.exists)
        return gate.fails(INVALID_FILE_ATTRIBUTES, place.error);
    return gate.done(attributesOf(place.status));
}

BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept {
    Gate gate(Function::SetFileAttributesW, path, trace::Hex{attributes});
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const std::string name = toUtf8(path);
    const Place place = locate(gate.image(), gate.runtime.directory(), name);
    if (!place.exists)
        return gate.fails(FALSE, place.error);
    if (isProtected(gate.image(), name))
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    if (place.isDirectory())
        return gate.done(TRUE);
    const mode_t writable = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = place.status.st_mode & 07777;
    const bool readOnly = attributes & FILE_ATTRIBUTE_READONLY;
    return answer(
        gate, chmod(place.host.c_str(), readOnly ? mode & ~writable : mode | S_IWUSR) == 0 ? 0 : ERROR_ACCESS_DENIED);
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) noexcept {
    Gate gate(Function::FindFirstFileW, pattern);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    LocalObject local;
    local.found = search(gate.image(), gate.runtime.directory(), toUtf8(pattern));
    if (!nextFound(local, data))
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    gate.shows(static_cast<const wchar_t*>(data->cFileName));
    const Lock lock(gate.image());
    const Slot object = objects::make(gate.image(), ObjectType::search);
    const std::uint32_t handle = object ? objects::openHandle(gate.image(), gate.process(), object) : 0;
    if (!handle) {
        if (object)
            objects::at(gate.image(), object).type = ObjectType::free;
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_NOT_ENOUGH_MEMORY);
    }
    gate.runtime.local(handle) = std::move(local);
    return gate.done(handleOf(handle));
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* data) noexcept {
    Gate gate(Function::FindNextFileW, handle);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    if (!isSearch(gate, handle))
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    if (!nextFound(gate.runtime.local(numberOf(handle)), data))
        return gate.fails(FALSE, ERROR_NO_MORE_FILES);
    gate.shows(static_cast<const wchar_t*>(data->cFileName));
    return gate.done(TRUE);
}

BOOL FindClose(HANDLE handle) noexcept {
    Gate gate(Function::FindClose, handle);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    if (!isSearch(gate, handle))
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    gate.runtime.local(numberOf(handle)) = {};
    objects::closeHandle(gate.image(), gate.process(), numberOf(handle));
    return gate.done(TRUE);
}

BOOL SHCreateShortcut(LPWSTR shortcut, LPWSTR target) noexcept {
    Gate gate(Function::SHCreateShortcut, shortcut, target);
    if (gate.faulted())
        return gate.fault<BOOL>();
    if (wideLength(target) >= shortcutSize)
        return gate.fails(FALSE, ERROR_FILENAME_EXCED_RANGE);
    const Lock lock(gate.image());
    const std::string name = toUtf8(shortcut);
    const Place place = locate(gate.image(), gate.runtime.directory(), name);
    if (!place.canBeMade())
        return gate.fails(FALSE, place.exists ? ERROR_FILE_EXISTS : place.error);
    if (isProtected(gate.image(), name))
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    const std::string text = std::to_string(wideLength(target)) + '#' + toUtf8(target);
    nameMade(gate.image(), place);
    const int file = open(place.host.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    const bool written = file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (file >= 0) {
        setWriteTime(gate.image(), file);
        close(file);
    }
    return answer(gate, written ? 0 : ERROR_ACCESS_DENIED);
}
