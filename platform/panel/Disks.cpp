#include "platform/panel/Disks.h"

#include "platform/panel/FolderNames.h"
#include "platform/panel/Json.h"
#include "platform/panel/Mapping.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/FileTimes.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Queues.h"

#include <utf8.h>

#include <algorithm>
#include <stdexcept>

namespace panel {

namespace fs = std::filesystem;

namespace {

bool lies(const fs::path& inner, const fs::path& outer) {
    const fs::path relative = fs::weakly_canonical(inner).lexically_relative(fs::canonical(outer));
    return !relative.empty() && *relative.begin() != "..";
}

// Copies files and folders, but no links. All write times become `date`, so that a run has the same times on every
// machine.
void copyFolder(const fs::path& folder, const fs::path& place, std::int64_t date) {
    fs::create_directory(place);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const fs::path copy = place / entry.path().filename();
        if (entry.is_symlink() || !(entry.is_directory() || entry.is_regular_file()))
            continue;
        if (entry.is_directory())
            copyFolder(entry.path(), copy, date);
        else
            fs::copy_file(entry.path(), copy);
        setWriteTime(copy.string(), date);
    }
}

// Copies into a temporary folder and renames it, so that the volume appears as a whole or not at all.
void copyDisk(const fs::path& root, const fs::path& folder, const fs::path& place, std::int64_t date) {
    const fs::path unfinished = root / "plugging";
    fs::remove_all(unfinished);
    try {
        copyFolder(folder, unfinished, date);
        fs::rename(unfinished, place);
    } catch (const fs::filesystem_error& error) {
        std::error_code ignored;
        fs::remove_all(unfinished, ignored);
        throw std::runtime_error("cannot copy " + folder.string() + ": " + error.code().message());
    }
}

bool isMounted(const Partition& partition) {
    return partition.attributes & mountedPartition;
}

// Returns whether the partition is a volume, or can become a volume when it is mounted.
bool holdsFiles(const Partition& partition) {
    return isMounted(partition) || (!partition.volume.empty() && !partition.folder.empty());
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& each) { return equalCaseBlind(each, name); });
}

void removeIfEmpty(const fs::path& folder) {
    std::error_code ignored;
    fs::remove(folder, ignored);
}

// Checks a disk that was read from the file: a person may have edited it.
void checkStored(const Disk& disk) {
    std::string fault;
    if (disk.partitions.size() > maxPartitions)
        fault = "too many partitions on " + disk.device;
    for (const Partition& partition : disk.partitions)
        if ((isMounted(partition) || !partition.volume.empty()) && fault.empty())
            fault = equalCaseBlind(partition.volume, "MMCMemory") || equalCaseBlind(partition.volume, "NANDFlash") ||
                            equalCaseBlind(partition.volume, "Windows")
                        ? "\"" + partition.volume + "\" is a folder of the panel itself"
                        : Disks::faultOf(partition.volume);
    if (!fault.empty())
        throw std::runtime_error(fault);
}

std::string freeDevice(const std::vector<Disk>& disks) {
    for (std::uint32_t number = 1; number <= maxBlockDevices; ++number) {
        const std::string name = "DSK" + std::to_string(number) + ':';
        if (std::none_of(disks.begin(), disks.end(), [&](const Disk& disk) { return disk.device == name; }))
            return name;
    }
    throw std::runtime_error("all block devices are taken (panel unplug frees one)");
}

bool isCalled(const Disk& disk, const std::string& name) {
    return equalCaseBlind(disk.device, name) ||
           std::any_of(disk.partitions.begin(), disk.partitions.end(), [&](const Partition& partition) {
               return !partition.volume.empty() && equalCaseBlind(partition.volume, name);
           });
}

void setVolumes(Image& image, const std::vector<Volume>& volumes) {
    for (std::uint32_t index = 0; index < maxVolumes; ++index)
        copyText(image.volumes[index], index < volumes.size() ? volumes[index].name : std::string());
}

void addDevice(Image& image, const Disk& disk) {
    const auto free = std::find_if(std::begin(image.blockDevices), std::end(image.blockDevices),
                                   [](const BlockDeviceRecord& record) { return !record.used; });
    if (free == std::end(image.blockDevices))
        return; // cannot happen: freeDevice gives as many names as there are records
    // A new serial invalidates stores that were opened on the former disk of this record.
    const std::uint32_t serial = free->serial + 1;
    *free = {};
    free->serial = serial;
    free->used = 1;
    free->readyAt = disk.readyAfter == never ? never : clock::now(image) + disk.readyAfter;
    copyText(free->name, disk.device);
    for (const Partition& partition : disk.partitions) {
        PartitionRecord& record = free->partitions[free->partitionCount++];
        copyText(record.volume, partition.volume);
        record.attributes = partition.attributes;
    }
}

} // namespace

std::string Disks::faultOf(const std::string& name) {
    const bool odd =
        name == "." || name == ".." || name.find_first_of("/\\:*?\"<>|") != std::string::npos ||
        std::any_of(name.begin(), name.end(), [](char byte) { return static_cast<unsigned char>(byte) < ' '; });
    if (name.empty() || odd || !utf8::is_valid(name.begin(), name.end()))
        return "not a valid volume name: \"" + name + '"';
    if (name.size() > sizeof PartitionRecord::volume - 2)
        return "too long for a volume name: \"" + name + '"';
    return {};
}

Disks::Disks(fs::path panelDirectory) : root(std::move(panelDirectory)), file(root / "devices/disks.json") {}

std::vector<Disk> Disks::list() const {
    std::vector<Disk> disks;
    try {
        for (const Json& json : parseJson(host::readFile(file.string()))) {
            Disk disk;
            disk.device = json.at("device");
            disk.inPlace = json.at("inPlace");
            disk.readyAfter = json.at("readyAfter").is_null() ? never : json["readyAfter"].get<std::uint64_t>();
            for (const Json& partition : json.at("partitions"))
                disk.partitions.push_back({{}, partition.at("volume"), partition.at("attributes")});
            checkStored(disk);
            disks.push_back(std::move(disk));
        }
    } catch (const std::exception& error) {
        throw std::runtime_error("not readable: " + file.string() + ": " + error.what());
    }
    return disks;
}

void Disks::save(const std::vector<Disk>& disks) const {
    Json list = Json::array();
    for (const Disk& disk : disks) {
        Json partitions = Json::array();
        for (const Partition& partition : disk.partitions)
            partitions.push_back({{"volume", partition.volume}, {"attributes", partition.attributes}});
        list.push_back({{"device", disk.device},
                        {"inPlace", disk.inPlace},
                        {"readyAfter", disk.readyAfter == never ? Json() : Json(disk.readyAfter)},
                        {"partitions", partitions}});
    }
    host::writeFile(file.string(), jsonText(list) + '\n');
}

void Disks::create() const {
    save({});
}

std::vector<Volume> Disks::volumes() const {
    std::vector<Volume> volumes{{"MMCMemory", "", false}, {"NANDFlash", "", false}};
    for (const Disk& disk : list())
        for (const Partition& partition : disk.partitions)
            if (isMounted(partition))
                volumes.push_back({partition.volume, disk.device, disk.inPlace});
    return volumes;
}

void Disks::show(Image& image) const {
    setVolumes(image, volumes());
    for (const Disk& disk : list())
        addDevice(image, disk);
}

std::vector<std::string> Disks::takenNames(const std::vector<Disk>& disks) const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(root / "fs"))
        names.push_back(entry.path().filename().string());
    for (const Disk& disk : disks)
        for (const Partition& partition : disk.partitions)
            if (!isMounted(partition))
                names.push_back(partition.volume);
    return names;
}

void Disks::nameVolumes(Disk& disk, const std::vector<Disk>& known) const {
    std::vector<std::string> names = takenNames(known);
    for (Partition& partition : disk.partitions) {
        if (!holdsFiles(partition))
            partition.volume.clear();
        names.push_back(partition.volume);
    }
    // The names given by the user come first: a default name must not take one of them.
    for (Partition& partition : disk.partitions) {
        if (!isMounted(partition) || !partition.volume.empty())
            continue;
        std::string name = "Hard Disk";
        for (int number = 2; contains(names, name); ++number)
            name = "Hard Disk" + std::to_string(number);
        partition.volume = name;
        names.push_back(name);
    }
}

fs::path Disks::placeOf(const Partition& partition) const {
    return root / (isMounted(partition) ? "fs" : "unmounted") / partition.volume;
}

void Disks::check(const Disk& disk, const std::vector<Disk>& known) const {
    std::vector<std::string> names = takenNames(known);
    std::size_t count = volumes().size();
    for (const Partition& partition : disk.partitions) {
        if (!holdsFiles(partition))
            continue;
        const std::string& name = partition.volume;
        if (!fs::is_directory(partition.folder))
            throw std::runtime_error("no such folder: " + partition.folder.string());
        if (const std::string fault = faultOf(name); !fault.empty())
            throw std::runtime_error(fault);
        if (lies(partition.folder, root) || lies(root, partition.folder))
            throw std::runtime_error("the folder contains the panel, or the panel the folder: " +
                                     partition.folder.string());
        if (contains(names, name))
            throw std::runtime_error("the panel has a \"" + name + "\" already (panel unplug removes a disk)");
        names.push_back(name);
        count += isMounted(partition);
        if (count > maxVolumes)
            throw std::runtime_error("the panel has as many volumes as it can (panel unplug removes a disk)");
    }
    if (disk.partitions.size() > maxPartitions)
        throw std::runtime_error("a disk has at most " + std::to_string(maxPartitions) + " partitions");
}

void Disks::tell(const Disk& disk, Event event) const {
    const Mapping kernel(root);
    if (!kernel.image)
        return;
    {
        const Lock lock(*kernel.image);
        setVolumes(*kernel.image, volumes());
        names::changed(*kernel.image);
        if (event == Event::attached)
            addDevice(*kernel.image, disk);
        for (BlockDeviceRecord& record : kernel.image->blockDevices) {
            if (!record.used || record.name != disk.device)
                continue;
            record.used = event != Event::detached;
            for (std::uint32_t index = 0; index < record.partitionCount; ++index)
                record.partitions[index].attributes = disk.partitions[index].attributes;
        }
        if (event != Event::mounted)
            queues::announce(*kernel.image, disk.device, event == Event::attached);
    }
    scheduler::deliverWakes(*kernel.image);
}

void Disks::removeFolders(const Disk& disk) const {
    const fs::path leaving = root / "unplugging";
    fs::remove_all(leaving);
    for (const Partition& partition : disk.partitions) {
        const fs::path place = partition.volume.empty() ? fs::path() : placeOf(partition);
        if (!fs::exists(fs::symlink_status(place)))
            continue;
        fs::rename(place, leaving); // first: programs may still change what is in the folder
        fs::remove_all(leaving); // for a disk that was plugged in place this removes only the link
    }
    removeIfEmpty(root / "unmounted");
}

std::string Disks::plug(Disk disk, std::int64_t date) const {
    const Change alone(root);
    std::vector<Disk> disks = list();
    nameVolumes(disk, disks);
    check(disk, disks);
    disk.device = freeDevice(disks);
    try {
        for (const Partition& partition : disk.partitions) {
            if (!holdsFiles(partition))
                continue;
            const fs::path place = placeOf(partition);
            fs::create_directories(place.parent_path());
            if (disk.inPlace)
                fs::create_directory_symlink(fs::absolute(partition.folder), place);
            else
                copyDisk(root, partition.folder, place, date);
        }
        disks.push_back(disk);
        save(disks);
    } catch (...) {
        removeFolders(disk);
        throw;
    }
    tell(disk, Event::attached);
    return disk.device;
}

void Disks::mount(const std::string& volume) const {
    const Change alone(root);
    std::vector<Disk> disks = list();
    for (Disk& disk : disks)
        for (Partition& partition : disk.partitions) {
            if (isMounted(partition) || !equalCaseBlind(partition.volume, volume))
                continue;
            if (volumes().size() >= maxVolumes)
                throw std::runtime_error("the panel has as many volumes as it can (panel unplug removes a disk)");
            const fs::path waiting = placeOf(partition);
            partition.attributes |= mountedPartition;
            if (contains(takenNames({}), partition.volume))
                throw std::runtime_error("the panel has a \"" + partition.volume + "\" already");
            fs::rename(waiting, placeOf(partition));
            try {
                save(disks);
            } catch (...) {
                fs::rename(placeOf(partition), waiting);
                throw;
            }
            removeIfEmpty(root / "unmounted");
            tell(disk, Event::mounted);
            return;
        }
    throw std::runtime_error("no partition \"" + volume + "\" waits to be mounted (panel status lists the disks)");
}

void Disks::copyFolders(const Disk& disk, const fs::path& folder) const {
    if (fs::exists(folder) && (!fs::is_directory(folder) || !fs::is_empty(folder)))
        throw std::runtime_error("the folder is not empty: " + folder.string() + " (choose another folder)");
    std::vector<fs::path> places;
    bool inside = lies(folder, root);
    for (const Partition& partition : disk.partitions)
        if (!partition.volume.empty()) {
            places.push_back(placeOf(partition));
            inside = inside || lies(folder, places.back()); // a disk that was plugged in place
        }
    if (inside)
        throw std::runtime_error("the folder lies in the panel or in the disk: " + folder.string());
    const bool existed = fs::exists(folder);
    try {
        fs::create_directories(folder);
        for (const fs::path& place : places)
            fs::copy(fs::canonical(place), places.size() > 1 ? folder / place.filename() : folder,
                     fs::copy_options::recursive | fs::copy_options::skip_symlinks);
    } catch (const std::exception& error) {
        std::error_code ignored;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored))
            fs::remove_all(entry, ignored);
        if (!existed)
            fs::remove(folder, ignored);
        throw std::runtime_error("cannot keep the disk's files in " + folder.string() + ": " + error.what());
    }
}

void Disks::unplug(const std::string& name, const fs::path& keep) const {
    const Change alone(root);
    std::vector<Disk> disks = list();
    const auto found = std::find_if(disks.begin(), disks.end(), [&](const Disk& disk) { return isCalled(disk, name); });
    if (found == disks.end())
        throw std::runtime_error("no disk \"" + name + "\" is plugged (panel status lists the disks)");
    const Disk disk = *found;
    if (!keep.empty())
        copyFolders(disk, keep);
    disks.erase(found);
    removeFolders(disk);
    save(disks);
    tell(disk, Event::detached);
}

} // namespace panel
