#include "platform/tool/Commands.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace tool {

namespace {

struct PlugOptions {
    std::string folder;
    std::string name = "Hard Disk";
    bool inPlace = false;
};

void plug(panel::Panel panel, const PlugOptions& options) {
    panel.plug(options.folder, options.name, options.inPlace);
    if (options.inPlace)
        complain("warning: programs of the panel may change and delete what is in " + options.folder);
    std::printf("Plugged %s%s as \\%s\n", options.inPlace ? "" : "a copy of ", options.folder.c_str(),
                options.name.c_str());
}

} // namespace

void addDiskCommands(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("plug", "Plug a copy of a folder of this machine as a disk");
    auto options = std::make_shared<PlugOptions>();
    command->add_option("FOLDER", options->folder, "What the disk holds")->required();
    command->add_option("--as", options->name, "The disk's name on the panel")
        ->type_name("NAME")
        ->capture_default_str();
    command->add_flag("--in-place", options->inPlace, "The folder itself, no copy: programs may delete from it");
    command->callback([options, &tool] { plug(tool.panel(), *options); });

    auto* removal = app.add_subcommand("unplug", "Pull a disk out; its copy goes");
    auto name = std::make_shared<std::string>();
    removal->add_option("NAME", *name, "The disk's name on the panel")->required();
    removal->callback([name, &tool] {
        tool.panel().unplug(*name);
        std::printf("Unplugged \\%s\n", name->c_str());
    });
}

} // namespace tool
