#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Progress.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

constexpr const char* notMounted = "-";

struct PlugOptions {
    std::vector<std::string> folders;
    std::vector<std::string> names;
    std::vector<std::string> attributes;
    std::string readyAfter = "0";
    bool neverReady = false;
    bool withoutPartitions = false;
    bool inPlace = false;
    bool json = false;
};

std::uint32_t attributesOf(const std::string& text) {
    const std::int64_t number = parseNumber(text);
    if (number < 0 || number > 0xFFFFFFFF)
        throw Misuse("a partition's attributes have 32 bits: \"" + text + "\" is none");
    return static_cast<std::uint32_t>(number);
}

void plug(panel::Panel panel, const PlugOptions& options) {
    if (options.folders.empty() != options.withoutPartitions)
        throw Misuse("a disk has folders, or it is without partitions (--help shows what is possible)");
    panel::Disk disk;
    disk.readyAfter = options.neverReady ? panel::never : parseDuration(options.readyAfter);
    disk.inPlace = options.inPlace;
    for (const std::string& volume : options.names)
        if (const std::string fault = panel::Disks::faultOf(volume); !fault.empty())
            throw Misuse(fault);
    auto name = options.names.begin();
    for (const std::string& folder : options.folders) {
        const bool hasFolder = folder != notMounted;
        panel::Partition partition{hasFolder ? folder : "", "", hasFolder ? panel::mountedPartition : 0};
        if (disk.partitions.size() < options.attributes.size())
            partition.attributes = attributesOf(options.attributes[disk.partitions.size()]);
        if (partition.attributes & panel::mountedPartition && !hasFolder)
            throw Misuse("a mounted partition (attribute 0x10) needs a folder");
        if (hasFolder && name != options.names.end())
            partition.volume = *name++;
        disk.partitions.push_back(partition);
    }
    if (options.attributes.size() > disk.partitions.size())
        throw Misuse("there are more --attributes than partitions (one for each FOLDER, in order)");
    if (name != options.names.end())
        throw Misuse("\"" + *name + "\" names no partition (each --as names one FOLDER, in order)");
    const std::string device = [&] {
        const Progress progress(disk.inPlace ? "" : "Copying ...");
        return panel.plug(disk);
    }();
    for (const panel::Disk& plugged : panel.disks().list()) // read again: plugging has chosen the volumes' names
        for (std::size_t index = 0; plugged.device == device && index < disk.partitions.size(); ++index)
            disk.partitions[index].volume = plugged.partitions.at(index).volume;
    for (const panel::Partition& partition : disk.partitions)
        if (partition.attributes & panel::mountedPartition && options.inPlace)
            complain("warning: programs of the panel may change and delete what is in " + partition.folder.string());
    if (options.json) {
        panel::Json volumes = panel::Json::array();
        for (const panel::Partition& partition : disk.partitions)
            volumes.push_back(partition.volume);
        return printJson({{"device", device}, {"volumes", volumes}});
    }
    for (const panel::Partition& partition : disk.partitions)
        if (!(partition.attributes & panel::mountedPartition))
            std::printf("Plugged a partition that is not mounted%s, on %s\n",
                        partition.volume.empty() ? "" : (" (panel mount \"" + partition.volume + "\")").c_str(),
                        device.c_str());
        else
            std::printf("Plugged %s%s as \\%s, on %s\n", options.inPlace ? "" : "a copy of ", partition.folder.c_str(),
                        partition.volume.c_str(), device.c_str());
    if (disk.partitions.empty())
        std::printf("Plugged a disk without partitions, %s\n", device.c_str());
}

} // namespace

void addDiskCommands(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("plug", "Plug a copy of a folder of this machine as a disk");
    auto options = std::make_shared<PlugOptions>();
    command->add_option(
        "FOLDER", options->folders,
        "Folder with the disk's files; several folders: one partition each; \"-\": an unmounted partition");
    command
        ->add_option("--as", options->names,
                     "The volume's name on the panel, once for each folder; default: the next free of Hard Disk, "
                     "Hard Disk2, ...")
        ->type_name("NAME")
        ->allow_extra_args(false);
    command
        ->add_option(
            "--attributes", options->attributes,
            "A partition's attributes, once for each folder in order: 0x10 is mounted (default); without it a folder "
            "that --as names waits for panel mount")
        ->type_name("N")
        ->allow_extra_args(false);
    auto* after = command
                      ->add_option("--ready-after", options->readyAfter,
                                   "Time until the store opens, from plugging and from each boot")
                      ->type_name("DURATION");
    command->add_flag("--never-ready", options->neverReady, "The store never opens")->excludes(after);
    command->add_flag("--without-partitions", options->withoutPartitions, "An unformatted disk");
    command->add_flag("--in-place", options->inPlace,
                      "Use the folder itself, not a copy: programs can delete your files");
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] { plug(tool.panel(), *options); });

    auto* mounting = app.add_subcommand("mount", "Mount a partition that was plugged with --as, but not mounted");
    auto volume = std::make_shared<std::string>();
    mounting->add_option("NAME", *volume, "Name of the partition's volume, from --as")->required();
    auto json = std::make_shared<bool>(false);
    mounting->add_flag("--json", *json, "Answer in JSON");
    mounting->callback([volume, json, &tool] {
        tool.panel().disks().mount(*volume);
        if (*json)
            return printJson({{"mounted", *volume}});
        std::printf("Mounted %s\n", volume->c_str());
    });

    auto* removal =
        app.add_subcommand("unplug", "Unplug a disk with all its partitions, and delete the copies of their files");
    auto name = std::make_shared<std::string>();
    removal->add_option("NAME", *name, "Name of one of its volumes, or its device (DSK1:)")->required();
    auto keep = std::make_shared<std::string>();
    auto* keeping = removal->add_option(
        "--keep", *keep,
        "First copy the disk's files, with what programs wrote, into this folder of this machine; it must "
        "be empty or not exist; several partitions: a folder each");
    keeping->type_name("FOLDER");
    removal->add_flag("--json", *json, "Answer in JSON");
    removal->callback([name, keep, keeping, json, &tool] {
        if (keeping->count() && keep->empty())
            throw Misuse("\"\" is not a folder for the disk's files");
        {
            const Progress progress(keep->empty() ? "" : "Copying ...");
            tool.panel().disks().unplug(*name, *keep);
        }
        if (*json)
            return printJson({{"unplugged", *name}, {"files", keep->empty() ? panel::Json() : panel::Json(*keep)}});
        std::printf("Unplugged %s%s%s\n", name->c_str(), keep->empty() ? "" : "; its files are in ", keep->c_str());
    });
}

} // namespace tool
