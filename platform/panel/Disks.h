// Plugged disks: block devices with partitions, of which the mounted ones are volumes with a folder in the panel's
// root.
//
//     devices/disks.json   what is plugged: device, when it is ready, its partitions
//     unmounted/           what named partitions hold that are not mounted yet
//
// Works with the panel on and off. All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace panel {

inline constexpr std::uint32_t mountedPartition = 0x10; // PARTITION_ATTRIBUTE_MOUNTED

struct Volume {
    std::string name; // the top folder
    std::string device; // "DSK1:"; empty: the panel's own storage, which cannot be unplugged
    bool inPlace; // shows a folder of the host itself, not a copy
};

struct Partition {
    std::filesystem::path folder; // of the host: what the partition holds; not kept
    // The top folder, once it is mounted. Empty: of a mounted one the next free name of "Hard Disk", "Hard Disk2", ...;
    // another one cannot be mounted.
    std::string volume = "Hard Disk";
    std::uint32_t attributes = mountedPartition; // PARTITION_ATTRIBUTE_*
};

struct Disk {
    std::vector<Partition> partitions;
    std::uint64_t readyAfter = 0; // ms of panel time from plugging or booting until its store opens; `never`
    bool inPlace = false; // programs write to and delete from the folders themselves
    std::string device = {}; // "DSK1:"; given by plugging
};

class Disks {
public:
    explicit Disks(std::filesystem::path panelDirectory);

    std::vector<Disk> list() const;
    std::vector<Volume> volumes() const; // the panel's own first

    // Its files are as if written at this date (ms since 1970 UTC). Announced to programs that asked for it; the device
    // is the first free one, and the answer.
    std::string plug(Disk disk, std::int64_t date) const;
    // A named partition that was plugged without being mounted, from now on.
    void mount(const std::string& volume) const;
    // By the device or one of its volumes, case-blind; with all its partitions. Announced, too.
    void unplug(const std::string& name) const;

    // Why it cannot be a volume's name; empty: it can. The platform has 64 characters for "\\" + name + zero.
    static std::string faultOf(const std::string& name);

    void create() const; // of a new panel: none
    void show(Image& image) const; // puts volumes and block devices into a booting panel's kernel file

private:
    std::vector<std::string> takenNames(const std::vector<Disk>& disks) const;
    void nameVolumes(Disk& disk, const std::vector<Disk>& known) const;
    void check(const Disk& disk, const std::vector<Disk>& known) const;
    std::filesystem::path placeOf(const Partition& partition) const; // of what it holds
    void tell(const Disk& disk, bool attached) const; // the panel, if it is on
    void tellAttributes(const Disk& disk) const; // which of its partitions are mounted
    void removeFolders(const Disk& disk) const;
    void save(const std::vector<Disk>& disks) const;

    std::filesystem::path root; // of the panel
    std::filesystem::path file;
};

} // namespace panel
