#include "platform/panel/FolderNames.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Host.h"

#include <algorithm>
#include <dirent.h>
#include <list>
#include <memory>
#include <unordered_map>

namespace panel::names {

namespace {

constexpr std::size_t maxKnown = 16; // cached folders
constexpr std::int64_t trusted = 500'000'000; // ns until a cached folder is read again

struct Known {
    const Image* image = nullptr;
    Folder folder;
    std::int64_t readAt = -trusted;
    std::uint64_t learnt = 0; // value of Image::namesMade up to which the names are included
    std::unordered_map<std::string, std::vector<std::string>> names; // the names by their folded form

    void add(const std::string& name) {
        std::vector<std::string>& same = names[fold(name)];
        if (std::find(same.begin(), same.end(), name) == same.end())
            same.push_back(name);
    }
    void read(const std::string& hostPath) {
        names.clear();
        const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(hostPath.c_str()), closedir);
        while (const dirent* entry = directory ? readdir(directory.get()) : nullptr)
            add(entry->d_name);
    }
    void learn(const MadeNameRecord& record) {
        if (Folder{record.device, record.inode} == folder)
            add(record.name);
    }
    std::vector<std::string> alike(std::string_view name) const {
        const auto found = names.find(fold(name));
        return found == names.end() ? std::vector<std::string>() : found->second;
    }
};

// Returns the cache of a folder. The list is sorted by last use, the latest first.
Known& known(const Image& image, Folder folder) {
    // Never destroyed: threads may still use it while the process ends.
    static auto& folders = *new std::list<Known>;
    const auto found = std::find_if(folders.begin(), folders.end(),
                                    [&](const Known& each) { return each.image == &image && each.folder == folder; });
    if (found == folders.end()) {
        folders.emplace_front();
        folders.front().image = &image;
        folders.front().folder = folder;
        folders.resize(std::min(folders.size(), maxKnown));
    } else {
        folders.splice(folders.begin(), folders, found);
    }
    return folders.front();
}

} // namespace

std::vector<std::string> alike(const Image& image, const std::string& hostPath, Folder folder, std::string_view name) {
    Known& names = known(image, folder);
    const std::int64_t now = host::monotonicNanoseconds();
    // The ring of new names may have lost entries since the last search; then only the folder itself is complete.
    if (image.namesMade - names.learnt > maxMadeNames || now - names.readAt > trusted) {
        names.read(hostPath);
        names.readAt = now;
        names.learnt = image.namesMade;
    }
    while (names.learnt != image.namesMade)
        names.learn(image.madeNames[names.learnt++ % maxMadeNames]);
    return names.alike(name);
}

std::vector<std::string> alike(const std::string& hostPath, std::string_view name) {
    Known names;
    names.read(hostPath);
    return names.alike(name);
}

void made(Image& image, Folder folder, std::string_view name) {
    MadeNameRecord& record = image.madeNames[image.namesMade % maxMadeNames];
    record.device = folder.device;
    record.inode = folder.inode;
    copyText(record.name, name);
    ++image.namesMade; // last, so that a process that is killed here leaves a complete record
}

void changed(Image& image) {
    image.namesMade += maxMadeNames + 1; // more than the ring holds, so that every cache reads its folder
}

} // namespace panel::names
