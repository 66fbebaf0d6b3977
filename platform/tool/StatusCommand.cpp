#include "platform/tool/Commands.h"
#include "platform/tool/StatusJson.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <memory>
#include <optional>

namespace tool {

namespace {

using panel::ClockMode;

// Words 0 and 2 of the backlight's record are the brightness levels.
std::string levels(const panel::PanelStatus& status) {
    const std::vector<std::uint32_t>& words = status.backLight;
    std::string record;
    for (const std::uint32_t word : words)
        record += ' ' + std::to_string(word);
    const std::string first = std::to_string(words.at(0));
    const std::string second = std::to_string(words.at(2));
    return (first == second ? "level " + first : "levels " + first + " and " + second) + " (record" + record + ')';
}

std::string shown(const panel::ScreenStatus& screen) {
    if (screen.cover.empty())
        return "nothing that covers it";
    return screen.background + ": " + screen.cover + " of " + screen.process + " covers it";
}

std::string readiness(const panel::Disk& disk) {
    if (disk.readyAfter == panel::never)
        return "never ready";
    return disk.readyAfter ? "ready after " + formatDuration(disk.readyAfter) : "ready at once";
}

std::string describe(const panel::Disk& disk) {
    std::string text = disk.device + ' ' + readiness(disk);
    for (const panel::Partition& partition : disk.partitions) {
        char attributes[16];
        std::snprintf(attributes, sizeof attributes, " 0x%x", partition.attributes);
        const bool mounted = partition.attributes & panel::mountedPartition;
        text += (mounted                    ? ", \\"
                 : partition.volume.empty() ? ", not mounted"
                                            : ", not mounted ") +
                partition.volume + attributes;
    }
    return text + (disk.partitions.empty() ? ", no partitions" : "");
}

std::string describe(const panel::Volume& volume) {
    return '\\' + volume.name +
           (volume.device.empty() ? "" : " on " + volume.device + (volume.inPlace ? " (in place)" : ""));
}

void addRunning(Table& facts, const panel::PanelStatus& status, std::size_t faults) {
    const bool stepped = status.mode == ClockMode::stepped;
    char factor[32];
    std::snprintf(factor, sizeof factor, "flowing, x %g", status.factor);
    facts.add({"clock", stepped ? "stepped" : status.factor == 1 ? "flowing" : factor});
    facts.add({"date", formatDate(status.date)});
    facts.add({"tick count", std::to_string(status.ticks)});
    facts.add({"user", !status.userActive   ? "unknown: the panel has no power manager"
                       : *status.userActive ? "active"
                                            : "inactive"});
    facts.add({"backlight", levels(status)});
    facts.add({"shows", shown(status.screen)});
    facts.add({"cursor", std::string(status.screen.cursorCount >= 0 ? "shown" : "hidden") + ", count " +
                             std::to_string(status.screen.cursorCount)});
    facts.add({"mouse hook", status.hook.empty() ? "none" : "of " + status.hook});
    facts.add({"flash", status.flashWritable ? "\\NANDFlash is writable" : "\\NANDFlash is write-protected"});
    facts.add({"trace", status.tracing ? "on" : "off"});
    facts.add({"faults", faults ? std::to_string(faults) + " (panel fault list)" : "none"});
    for (const auto& process : status.processes)
        if (!process.driver)
            facts.add({"process", process.name + "  " + process.path});
    for (const auto& ended : status.ended)
        facts.add({"ended", ended.name + "  exit code " + std::to_string(ended.exitCode) + ", " +
                                formatDuration(ended.time) + " after boot"});
    for (const auto& signal : status.signals)
        facts.add({"event", signal.event + " was set " + std::to_string(signal.count) + " times"});
    for (const auto& window : status.windows)
        facts.add({"window", window.className + " of " + window.process + (window.visible ? ", visible" : ", hidden")});
}

std::string describe(const std::vector<panel::Request>& beeps) {
    if (beeps.empty())
        return "no request since boot";
    const panel::Request& last = beeps.back();
    return std::to_string(beeps.size()) + (beeps.size() == 1 ? " request" : " requests") + ", the last for " +
           std::to_string(last.words.at(0)) + " Hz and " + std::to_string(last.words.at(1)) + " ms, " +
           formatDuration(last.time) + " after boot" + (last.error ? ", refused" : "");
}

void print(const panel::Panel& panel) {
    const panel::PanelOptions options = panel.options();
    const char* storage = panel::storageNames[static_cast<std::size_t>(options.storage)];
    const bool on = panel.isOn();
    const std::string whyOff = panel.whyOff();
    panel::PanelStatus status{};
    std::size_t faults = 0;
    if (on) {
        panel::Driver driver(panel);
        status = driver.status();
        faults = driver.faults().size();
    }
    Table facts;
    facts.add({"panel", panel.directory().string()});
    facts.add({"power", on ? "on, booted " + formatDuration(status.time) + " ago"
                           : "off" + (whyOff.empty() ? "" : ": " + whyOff) + " (panel boot switches it on)"});
    facts.add({"screen", std::to_string(options.screenWidth) + " x " + std::to_string(options.screenHeight)});
    for (const auto& volume : panel.disks().volumes())
        facts.add({"volume", describe(volume)});
    for (const auto& disk : panel.disks().list())
        facts.add({"disk", describe(disk)});
    facts.add({"storage policy", storage});
    facts.add({"buzzer", describe(panel.devices().requests("BZR1"))});
    if (on)
        addRunning(facts, status, faults);
    else
        facts.add({"date", formatDate(panel.date()) + " (stands still while the panel is off)"});
    facts.print();
}

} // namespace

void addStatusCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("status", "Show the state of the panel, on or off");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Answer in JSON");
    command->callback([json, &tool] {
        const panel::Panel panel = tool.panel();
        if (!*json)
            return print(panel);
        std::optional<panel::Driver> driver;
        if (panel.isOn())
            driver.emplace(panel);
        printJson(statusJson(panel, driver ? &*driver : nullptr));
    });
}

} // namespace tool
