// Translates panel paths to host paths.
//
// A panel path has backslashes, an optional leading backslash, no drive, no "." and no "..". Names are case-insensitive
// and case-preserving. The kernel file lists the top folders that are volumes (persistent storage, flash, plugged
// disks). The error numbers here are those of <windows.h>.
#pragma once

#include "platform/panel/FolderNames.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace panel {

// The place of a panel path on the host.
struct Place {
    std::string host; // host path of the file, or of the file that would be created
    names::Folder folder; // the host folder that holds it
    bool exists = false;
    // The reason if it does not exist: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME, ...
    std::uint32_t error = 0;
    struct stat status {}; // valid if it exists

    // These functions return whether the place is an existing folder, an existing file, or an existing file without
    // write permission.
    bool isDirectory() const {
        return exists && S_ISDIR(status.st_mode);
    }
    bool isFile() const {
        return exists && S_ISREG(status.st_mode);
    }
    bool isReadOnly() const {
        return isFile() && !(status.st_mode & S_IWUSR);
    }
    // Returns whether a file can be created here: the folder exists, the name is valid and not taken.
    bool canBeMade() const {
        return !exists && error == 2;
    }
};

// Looks up a panel path. `root` is the panel's directory. The caller of the first form holds the kernel's lock. The
// second form also works while the panel is off; it is slower, since it lists a folder whenever the folder lacks the
// exact name.
Place locate(const Image& image, const std::string& root, std::string_view panelPath);
Place locate(const std::string& root, std::string_view panelPath);

// Announces to all processes the name that a program is about to create here. Needs the kernel's lock.
inline void nameMade(Image& image, const Place& place) {
    names::made(image, place.folder, std::string_view(place.host).substr(place.host.rfind('/') + 1));
}

// Reads the status of a host file as the panel sees it. Returns false if the path does not exist or is neither a file
// nor a folder. Follows a symbolic link only if `top` is true. `top` means that the file lies directly in the panel's
// root: a link there is a disk that was plugged in place.
bool statusOf(const std::string& hostPath, bool top, struct stat& status);

// Returns the name of the volume that holds the path. An empty name stands for the panel's object store.
std::string volumeOf(const Image& image, std::string_view panelPath);

// Returns whether the path is the flash volume or lies on it.
bool isOnFlash(std::string_view panelPath);
// Returns whether the path is write-protected now.
inline bool isProtected(const Image& image, std::string_view panelPath) {
    return !image.flashWritable && isOnFlash(panelPath);
}

// Returns whether a name matches a pattern with "*" and "?". "*.*" matches every name; an empty pattern matches none.
bool matches(std::string_view pattern, std::string_view name);

} // namespace panel
