#include "platform/panel/kernel/Storage.h"

#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Objects.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace panel::storage {

namespace fs = std::filesystem;

namespace {

struct Range { // bytes of a file
    std::uint64_t offset;
    std::uint64_t length;
};

bool isRecorded(const Image& image) {
    return image.storage != StoragePolicy::kept && image.on; // a driver may go on writing after the power cut
}

fs::path journal(const fs::path& root) {
    return root / "run/uncommitted";
}

std::string identity(std::uint64_t device, std::uint64_t inode) {
    return std::to_string(device) + '-' + std::to_string(inode);
}

fs::path journal(const Image& image, const ObjectRecord& file) {
    return journal(image.directory) / identity(file.device, file.inode);
}

// Returns whether the panel has written the file last, not a person: the panel's clock has whole milliseconds.
bool isByPanel(const struct stat& status) {
    return status.st_mtim.tv_nsec % 1000000 == 0;
}

std::string read(const fs::path& file) {
    return host::readFile(file.string());
}

// Returns the place of an open file relative to the panel's directory; "" if it is not on the panel's own storage.
std::string placeOf(const Image& image, int hostFile) {
    std::error_code failed;
    const std::string file = fs::read_symlink("/proc/self/fd/" + std::to_string(hostFile), failed).string();
    const std::string top = fs::canonical(image.directory, failed).string() + "/fs/";
    if (failed || !file.starts_with(top))
        return {};
    const std::string volume = file.substr(top.size(), file.find('/', top.size()) - top.size());
    // The first two volumes are the panel's own, the others are plugged disks (Disks::volumes).
    const bool plugged = std::any_of(std::begin(image.volumes) + 2, std::end(image.volumes),
                                     [&](const char* name) { return volume == name; });
    return plugged ? std::string() : file.substr(top.size() - 3);
}

// Returns whether a place below the panel's directory leads nowhere else, be it by a link, as "/etc" or by "..". The
// directory may be a copy from somebody whom nobody knows.
bool isOwn(const fs::path& root, const fs::path& place) {
    std::error_code failed;
    const fs::path top = fs::canonical(root, failed);
    return fs::canonical(root / place, failed) == top / place && !failed;
}

void forget(const fs::path& folder) {
    std::error_code ignored;
    fs::remove(folder / "path", ignored); // first: a process that is killed here leaves nothing that counts
    fs::remove_all(folder, ignored);
}

void copyTime(const fs::path& from, const fs::path& to) {
    fs::last_write_time(to, fs::last_write_time(from));
}

// Returns whether a handle other than `own` has written to the file of the folder.
bool hasOtherWriters(const fs::path& folder, const fs::path& own) {
    return std::any_of(fs::directory_iterator(folder), fs::directory_iterator(), [&](const fs::directory_entry& entry) {
        const std::string name = entry.path().filename().string();
        return name.find_first_not_of("0123456789") == std::string::npos && entry.path() != own;
    });
}

// Overwrites a range of the committed content with what was written there.
void take(std::string& committed, const std::string& written, Range range) {
    if (range.offset >= written.size())
        return;
    range.length = std::min<std::uint64_t>(range.length, written.size() - range.offset);
    committed.resize(std::max<std::size_t>(committed.size(), range.offset + range.length));
    committed.replace(range.offset, range.length, written, range.offset, range.length);
}

// Takes the first sectors that differ.
void takeSectors(std::string& committed, const std::string& written, std::uint32_t sectors) {
    for (std::size_t at = 0; at < written.size() && sectors; at += sectorSize) {
        if (at < committed.size() && committed.compare(at, sectorSize, written, at, sectorSize) == 0)
            continue;
        take(committed, written, {at, sectorSize});
        --sectors;
    }
}

} // namespace

bool beforeWrite(const Image& image, Slot file, int hostFile, std::uint64_t bytes) try {
    if (!isRecorded(image))
        return true;
    const fs::path folder = journal(image, image.objects[file - 1]);
    struct stat status {};
    if (fstat(hostFile, &status) != 0 || status.st_nlink == 0) // deleted by a person, or on a disk that was unplugged
        return true;
    if (!isByPanel(status))
        forget(folder); // commits what was written before, too
    if (!fs::exists(folder / "path")) {
        const std::string place = placeOf(image, hostFile);
        if (place.empty())
            return true;
        fs::remove_all(folder);
        fs::create_directories(folder);
        const fs::path source = fs::path(image.directory) / place;
        fs::copy_file(source, folder / "committed");
        copyTime(source, folder / "committed");
        host::writeFile(folder / "path", place);
    }
    const off_t offset = lseek(hostFile, 0, SEEK_CUR);
    const Range range{static_cast<std::uint64_t>(offset), bytes};
    const fs::path own = folder / std::to_string(file);
    if (host::appendToFile(own, {reinterpret_cast<const char*>(&range), sizeof range}) != 0)
        return true;
    if (fs::exists(own)) // perhaps with a part of the range
        fs::resize_file(own, fs::file_size(own) / sizeof range * sizeof range);
    return false;
} catch (const std::exception&) {
    return false;
}

void commit(const Image& image, Slot file) {
    if (!isRecorded(image))
        return;
    const fs::path folder = journal(image, image.objects[file - 1]);
    const fs::path own = folder / std::to_string(file);
    try {
        if (!fs::exists(folder))
            return;
        if (!hasOtherWriters(folder, own)) {
            forget(folder);
            return;
        }
        const std::string ranges = read(own);
        if (ranges.empty())
            return;
        const fs::path source = fs::path(image.directory) / read(folder / "path");
        const std::string written = read(source);
        std::string committed = read(folder / "committed");
        for (std::size_t at = 0; at + sizeof(Range) <= ranges.size(); at += sizeof(Range)) {
            Range range;
            std::memcpy(&range, ranges.data() + at, sizeof range);
            take(committed, written, range);
        }
        host::writeFile(folder / "committed", committed);
        copyTime(source, folder / "committed");
        fs::remove(own);
    } catch (const std::exception&) {
        forget(folder); // the host is full: rather nothing is lost than too much
    }
}

void emptied(const Image& image, const ObjectRecord& file) {
    if (isRecorded(image))
        forget(journal(image, file));
}

void renamed(const Image& image, const std::string& from, const std::string& to) {
    if (!isRecorded(image))
        return;
    std::error_code none;
    for (const fs::directory_entry& folder : fs::directory_iterator(journal(image.directory), none)) {
        const std::string place = read(folder.path() / "path");
        if (place != from && !place.starts_with(from + '/'))
            continue;
        try {
            host::writeFile(folder.path() / "path", to + place.substr(from.size()));
        } catch (const std::exception&) {
            forget(folder);
        }
    }
}

void commitAll(const fs::path& root) {
    fs::remove_all(journal(root));
}

void cutPower(const fs::path& root, std::uint32_t sectors, bool copied) {
    std::error_code none;
    for (const fs::directory_entry& folder : fs::directory_iterator(journal(root), none)) {
        const std::string place = read(folder.path() / "path");
        const fs::path file = root / place;
        const fs::path committed = folder.path() / "committed";
        struct stat status {};
        if (!place.starts_with("fs/") || !isOwn(root, place) || !isOwn(root, committed.lexically_relative(root)))
            continue;
        if (!fs::is_regular_file(committed) || lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
            continue;
        const bool same = folder.path().filename() == identity(status.st_dev, status.st_ino); // not in a copy
        if (same ? !isByPanel(status) : !copied)
            continue;
        if (sectors) {
            std::string content = read(committed);
            takeSectors(content, read(file), sectors);
            host::writeFile(committed, content);
            copyTime(file, committed);
        }
        fs::permissions(committed, fs::perms(status.st_mode & 07777));
        fs::rename(committed, file);
    }
    fs::remove_all(journal(root));
}

} // namespace panel::storage
