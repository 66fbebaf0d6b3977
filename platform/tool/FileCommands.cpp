#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Units.h"

#include "platform/panel/Mapping.h"
#include "platform/panel/Paths.h"
#include "platform/panel/api/FileTimes.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

struct AttributesOptions {
    std::string path;
    std::string written;
    bool readOnly = false;
    bool writable = false;
    bool json = false;
};

panel::Place find(const panel::Panel& panel, const std::string& path) {
    panel::Place place = panel::locate(panel.directory().string(), path);
    if (!place.exists)
        throw std::runtime_error("no such file or folder on the panel: " + path);
    return place;
}

void change(const panel::Panel& panel, const AttributesOptions& options) {
    const std::int64_t date = options.written.empty() ? 0 : parseDate(options.written);
    const panel::LockedChange change(panel.directory());
    const panel::Place place = find(panel, options.path);
    if (options.readOnly && place.isDirectory())
        throw std::runtime_error("a folder has no attribute to set: " + options.path);
    const mode_t all = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = place.status.st_mode & 07777;
    if ((options.readOnly || options.writable) &&
        chmod(place.host.c_str(), options.readOnly ? mode & ~all : mode | S_IWUSR) != 0)
        throw std::runtime_error("the host refused: " + place.host);
    if (!options.written.empty())
        panel::setWriteTime(place.host, date);
}

void show(const panel::Panel& panel, const AttributesOptions& options) {
    const panel::Place place = find(panel, options.path);
    const char* const attributes = place.isDirectory() ? "folder" : place.isReadOnly() ? "read-only" : "normal";
    const std::int64_t date = place.status.st_mtim.tv_sec * std::int64_t{1000} + place.status.st_mtim.tv_nsec / 1000000;
    const std::int64_t size = place.isDirectory() ? 0 : place.status.st_size;
    if (options.json)
        printJson({{"attributes", attributes}, {"size", size}, {"written", formatDate(date)}});
    else
        std::printf("%s, %lld bytes, written %s\n", attributes, static_cast<long long>(size), formatDate(date).c_str());
}

} // namespace

void addFileCommands(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("attributes", "Show a file's attributes and write time, and set them");
    auto options = std::make_shared<AttributesOptions>();
    command->add_option("PATH", options->path, "Panel path, such as \"\\MMCMemory\\Tarvex\\config.xml\"")->required();
    auto* readOnly = command->add_flag("--read-only", options->readOnly,
                                       "Make the file read-only: programs cannot write or delete it");
    command->add_flag("--writable", options->writable, "Make the file writable")->excludes(readOnly);
    command->add_option("--written", options->written, "Set the write time (UTC)")->type_name("DATE");
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] {
        const panel::Panel panel = tool.panel();
        if (options->readOnly || options->writable || !options->written.empty())
            change(panel, *options);
        show(panel, *options);
    });
}

} // namespace tool
