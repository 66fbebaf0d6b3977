// Paths of the panel and where they lie on the host.
//
// A panel path has backslashes, with or without a leading one, no drive, no "." and ".."; names are case-blind and
// case-keeping. The top folders that are volumes of their own (persistent storage, flash, plugged disks) are listed in
// the kernel file.
#pragma once

#include "platform/panel/FolderNames.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace panel {

struct Place {
    std::string host; // where it lies, or would lie
    names::Folder folder; // in which of the host's
    bool exists = false;
    std::uint32_t error = 0; // why not: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME, ...
    struct stat status {}; // if it exists

    bool isDirectory() const {
        return exists && S_ISDIR(status.st_mode);
    }
    bool isFile() const {
        return exists && S_ISREG(status.st_mode);
    }
    bool isReadOnly() const {
        return isFile() && !(status.st_mode & S_IWUSR);
    }
    // A file may be made here: the folder above exists, and the name is one.
    bool canBeMade() const {
        return !exists && error == 2;
    }
};

// `root`: the panel's directory. With the image it wants the lock; without, it reads every folder in which it does not
// find the exact name.
Place locate(const Image& image, const std::string& root, std::string_view panelPath);
Place locate(const std::string& root, std::string_view panelPath);

// Tells every process of the name that a program is about to make here. Wants the lock.
inline void nameMade(Image& image, const Place& place) {
    names::made(image, place.folder, std::string_view(place.host).substr(place.host.rfind('/') + 1));
}

// What the panel sees of a host's file: a file or folder, no link. `top`: directly in the panel's root.
bool statusOf(const std::string& hostPath, bool top, struct stat& status);

// The name of the volume that the path lies on, as the kernel file has it; empty: the panel's own object store.
std::string volumeOf(const Image& image, std::string_view panelPath);

// Whether the path lies on the flash volume, or is it; and whether that must not be changed now.
bool isOnFlash(std::string_view panelPath);
inline bool isProtected(const Image& image, std::string_view panelPath) {
    return !image.flashWritable && isOnFlash(panelPath);
}

// Whether a name matches a pattern of "*" and "?"; "*.*" matches everything, an empty pattern nothing.
bool matches(std::string_view pattern, std::string_view name);

} // namespace panel
