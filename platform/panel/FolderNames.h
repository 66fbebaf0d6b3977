// Finds names in a host's folder without their case, at a cost that does not grow with the folder.
//
// Each process keeps the names of the folders that it last searched. What programs of the panel have made since, it
// learns from the kernel file, at once; what a person has put into the folder, as it reads the folder again, half a
// real second later at the latest. Names that have gone are kept until then. What takes an image wants the panel's
// lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string>
#include <string_view>
#include <vector>

namespace panel::names {

struct Folder { // its identity on the host
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const Folder&) const = default;
};

// The folder's names that differ from this one in their case alone, or not at all. Some may have gone.
std::vector<std::string> alike(const Image& image, const std::string& hostPath, Folder folder, std::string_view name);

// The same without a panel that is on, hence without the lock: reads the folder.
std::vector<std::string> alike(const std::string& hostPath, std::string_view name);

// Tells every process of a name that a program is about to make: a new file or folder, or a new name of one. If it
// comes to nothing, no harm is done.
void made(Image& image, Folder folder, std::string_view name);

// Folders have changed otherwise: each process reads them again.
void changed(Image& image);

} // namespace panel::names
