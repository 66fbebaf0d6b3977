// The disks that are plugged into a panel. A disk is a block device with partitions. Each mounted partition is a
// volume: a folder in the panel's root.
//
//     devices/disks.json   the plugged disks: device name, ready time, partitions
//     unmounted/           the files of named partitions that are not mounted yet
//
// The class works whether the panel is on or off. All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace panel {

inline constexpr std::uint32_t mountedPartition = 0x10; // PARTITION_ATTRIBUTE_MOUNTED

// A folder in the panel's root with storage of its own.
struct Volume {
    std::string name; // name of the folder
    std::string device; // "DSK1:"; empty: the panel's own storage, which cannot be unplugged
    bool inPlace; // the volume is the host's folder itself, not a copy
};

// A partition of a disk, to be plugged or already plugged.
struct Partition {
    std::filesystem::path folder; // host folder with the partition's files; used by `plug` only, not stored
    // Name of the volume. If it is empty, `plug` gives a mounted partition the next free name of "Hard Disk",
    // "Hard Disk2" and so on. An unmounted partition without a name can never be mounted.
    std::string volume = "Hard Disk";
    std::uint32_t attributes = mountedPartition; // PARTITION_ATTRIBUTE_* bits
};

// A disk, to be plugged or already plugged. It has at most 8 partitions.
struct Disk {
    std::vector<Partition> partitions;
    std::uint64_t readyAfter = 0; // panel ms from plugging or booting until OpenStore succeeds; or `never`
    bool inPlace = false; // programs work on the host's folders: they can change and delete your files
    std::string device = {}; // "DSK1:"; `plug` sets it
};

// Reads and changes the list of disks. Objects keep nothing but paths, so they are cheap to create.
class Disks {
public:
    explicit Disks(std::filesystem::path panelDirectory);

    std::vector<Disk> list() const; // the plugged disks
    std::vector<Volume> volumes() const; // all volumes, starting with the panel's own

    // Plugs a disk: copies its files and notifies the programs that asked for device notifications. `date` becomes the
    // write time of all copied files (ms since 1970 UTC). Returns the device name, the first free one of "DSK1:" to
    // "DSK8:".
    std::string plug(Disk disk, std::int64_t date) const;
    // Mounts a named partition that was plugged without PARTITION_ATTRIBUTE_MOUNTED. Programs are not notified.
    void mount(const std::string& volume) const;
    // Removes a disk with all its partitions and deletes the copies of their files. `name` is the device or one of its
    // volumes, case-insensitively. Notifies the programs as `plug` does.
    // With `keep` it first copies the disk's files into that folder of the host, which must be empty or not exist; the
    // files of several partitions go into folders with the volumes' names. If that fails, the disk stays plugged.
    void unplug(const std::string& name, const std::filesystem::path& keep = {}) const;

    // Returns the reason why a text cannot be the name of a volume, or "" if it can be. The platform keeps 64
    // characters for the backslash, the name and the terminating zero.
    static std::string faultOf(const std::string& name);

    // Writes the empty list of a new panel.
    void create() const;
    // Enters volumes and block devices into the kernel file while the panel boots.
    void show(Image& image) const;

private:
    std::vector<std::string> takenNames(const std::vector<Disk>& disks) const;
    void nameVolumes(Disk& disk, const std::vector<Disk>& known) const;
    void check(const Disk& disk, const std::vector<Disk>& known) const;
    std::filesystem::path placeOf(const Partition& partition) const; // host folder of the partition's files
    enum class Event { attached, detached, mounted };
    void tell(const Disk& disk, Event event) const; // updates the kernel file if the panel is on
    void removeFolders(const Disk& disk) const;
    void copyFolders(const Disk& disk, const std::filesystem::path& folder) const;
    void save(const std::vector<Disk>& disks) const;

    std::filesystem::path root; // the panel's directory
    std::filesystem::path file; // devices/disks.json
};

} // namespace panel
