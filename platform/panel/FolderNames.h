// Finds names in a host folder case-insensitively. The cost of a search does not grow with the folder.
//
// Each process caches the names of the 16 folders that it used last. A cached name may no longer exist. The cache
// learns of new names in two ways:
// - If a program of the panel creates a name, `made` records it in the kernel file. All processes see it at once.
// - If a person creates a name on the host, the cache finds it when it reads the folder again, at most half a second of
//   real time later.
//
// Functions that take an image need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>
#include <string_view>
#include <vector>

namespace panel::names {

// A folder's identity on the host.
struct Folder {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const Folder&) const = default;
};

// Returns the names in the folder that equal `name` case-insensitively. Some of them may no longer exist.
std::vector<std::string> alike(const Image& image, const std::string& hostPath, Folder folder, std::string_view name);

// Does the same without a panel that is on: reads the folder each time and needs no lock.
std::vector<std::string> alike(const std::string& hostPath, std::string_view name);

// Records a name that a program is about to create, be it by creation or by renaming. A name that is not created after
// all does no harm.
void made(Image& image, Folder folder, std::string_view name);

// Makes every process read its cached folders again. Call it after other changes of folders, such as plugging a disk.
void changed(Image& image);

} // namespace panel::names
