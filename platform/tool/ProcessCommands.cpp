#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"
#include "platform/tool/Unreturned.h"

#include "platform/panel/Client.h"
#include "platform/panel/Text.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

namespace fs = std::filesystem;
using panel::Json;

std::string stateOf(const panel::ProcessStatus& process) {
    if (process.threads == 0)
        return "unknown"; // panel time does not wait for this program, so its threads are unknown
    return process.threads == process.waiting ? "waits" : "runs";
}

void printAsJson(const panel::PanelStatus& status, bool all) {
    Json list = Json::array();
    for (const auto& process : status.processes) {
        if (process.driver && !all)
            continue;
        Json calls = Json::array();
        for (const auto& each : process.calls)
            calls.push_back({{"thread", each.thread}, {"since", each.since}, {"call", each.call}});
        list.push_back({{"name", process.name},
                        {"path", process.path},
                        {"arguments", process.commandLine},
                        {"state", stateOf(process)},
                        {"threads", process.threads},
                        {"waiting", process.waiting},
                        {"handles", process.handles},
                        {"hostPid", process.hostPid},
                        {"calls", std::move(calls)}});
    }
    Json ended = Json::array();
    for (const auto& process : status.ended)
        ended.push_back({{"name", process.name}, {"exitCode", process.exitCode}, {"time", process.time}});
    Json answer{{"processes", std::move(list)}};
    if (all)
        answer["ended"] = std::move(ended);
    printJson(answer);
}

void list(const panel::Panel& panel, bool all, bool json) {
    const panel::PanelStatus status = panel::Driver(panel).status();
    if (json)
        return printAsJson(status, all);
    Table table({"NAME", "STATE", "THREADS", "HANDLES", "PID", "PATH", "ARGUMENTS"});
    for (const auto& process : status.processes)
        if (all || !process.driver)
            table.add({process.name, stateOf(process), std::to_string(process.threads), std::to_string(process.handles),
                       std::to_string(process.hostPid), process.path, process.commandLine});
    if (all)
        for (const auto& process : status.ended)
            table.add({process.name, "ended, " + std::to_string(process.exitCode)});
    table.print();
    if (table.empty())
        std::puts("No program runs on the panel.");
    for (const std::string& line : unreturnedCalls(status))
        std::puts(line.c_str());
}

void addPs(CLI::App& app, Tool& tool) {
    struct Options {
        bool all = false;
        bool json = false;
    };
    auto* command =
        app.add_subcommand("ps", "List the running programs, and the platform calls in which their threads wait");
    auto options = std::make_shared<Options>();
    command->add_flag("--all", options->all, "Also list ended programs with their exit codes, and panel commands");
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] { list(tool.panel(), options->all, options->json); });
}

struct WaitOptions {
    std::string window;
    std::string process;
    bool json = false;
    std::string limit = "1min";
};

// Returns whether the user means this process: "TarvexHelper.exe" means all starts, "TarvexHelper.exe#2" one start.
bool isMeant(const std::string& wanted, const std::string& name) {
    return panel::equalCaseBlind(wanted, name) || panel::equalCaseBlind(wanted, name.substr(0, name.rfind('#')));
}

// Returns the latest start of the program, unless a start of it still runs.
std::optional<panel::EndedStatus> findEnded(panel::Driver& driver, const std::string& wanted) {
    const panel::PanelStatus status = driver.status();
    for (const auto& process : status.processes)
        if (isMeant(wanted, process.name))
            return std::nullopt;
    const auto found = std::find_if(status.ended.rbegin(), status.ended.rend(),
                                    [&](const panel::EndedStatus& ended) { return isMeant(wanted, ended.name); });
    return found == status.ended.rend() ? std::nullopt : std::optional(*found);
}

void report(const panel::EndedStatus& ended, bool json) {
    if (json)
        printJson({{"name", ended.name}, {"exitCode", ended.exitCode}, {"time", ended.time}});
    else
        std::printf("%s ended with exit code %s\n", ended.name.c_str(),
                    toned(std::to_string(ended.exitCode), ended.exitCode ? Tone::bad : Tone::good).c_str());
}

// Returns whether the panel has a file of this name. `wait --exit` accepts a program that was not started yet, but not
// a mistyped name. The search follows no links except disks that were plugged in place.
bool hasFile(const panel::Panel& panel, const std::string& process) {
    const std::string name = process.substr(0, process.rfind('#'));
    const auto isIt = [&](const fs::directory_entry& entry) {
        return panel::equalCaseBlind(entry.path().filename().string(), name);
    };
    constexpr auto options = fs::directory_options::skip_permission_denied;
    for (const fs::directory_entry& top : fs::directory_iterator(panel.directory() / "fs"))
        if (isIt(top) || (top.is_directory() && std::any_of(fs::recursive_directory_iterator(top.path(), options),
                                                            fs::recursive_directory_iterator(), isIt)))
            return true;
    return false;
}

void checkProcess(const panel::Panel& panel, const panel::PanelStatus& status, const std::string& wanted) {
    const auto meant = [&](const auto& process) { return isMeant(wanted, process.name); };
    if (std::none_of(status.processes.begin(), status.processes.end(), meant) &&
        std::none_of(status.ended.begin(), status.ended.end(), meant) && !hasFile(panel, wanted))
        throw Misuse("the panel has no program \"" + wanted + "\" (panel ps --all lists those that were started)");
}

void wait(Tool& tool, const WaitOptions& options) {
    if (options.window.empty() == options.process.empty())
        throw Misuse("wait for what? Name either --window CLASS or --exit PROCESS");
    if (options.process.ends_with('#'))
        throw Misuse("which start of the program? \"" + options.process + "\" needs a number");
    const std::uint32_t limit = parseLimit(options.limit);
    const panel::Panel panel = tool.panel();
    panel::Driver driver(panel);
    if (!options.process.empty())
        checkProcess(panel, driver.status(), options.process);
    std::optional<panel::EndedStatus> ended;
    const bool happened = driver.waitUntil(
        [&] {
            if (!driver.isOn())
                return true;
            if (!options.window.empty())
                return panel::findWindow(options.window) != 0;
            ended = findEnded(driver, options.process);
            return ended.has_value();
        },
        limit);
    // The condition above also ends the wait when the panel goes off.
    if (!driver.isOn())
        throw std::runtime_error("the panel was switched off meanwhile");
    if (ended)
        report(*ended, options.json);
    if (happened)
        return;
    complain((options.window.empty() ? options.process + " has not ended" : "there is no window " + options.window) +
             " after " + formatDuration(limit) + " (--limit allows more)");
    tool.exitCode = limitPassed;
}

void addWait(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("wait", "Let panel time pass until a window exists or a program has ended");
    auto options = std::make_shared<WaitOptions>();
    command->add_option("--window", options->window, "Wait for a window of this class")->type_name("CLASS");
    command
        ->add_option("--exit", options->process,
                     "Wait for the end of TarvexHelper.exe#2, or of the last TarvexHelper.exe")
        ->type_name("PROCESS");
    command->add_option("--limit", options->limit, "Time-out; exit code 124 if it passes")
        ->type_name("DURATION")
        ->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] { wait(tool, *options); });
}

void kill(const panel::Panel& panel, const std::string& wanted) {
    panel::Driver driver(panel);
    std::vector<std::string> meant;
    for (const auto& process : driver.status().processes)
        if (!process.driver && isMeant(wanted, process.name))
            meant.push_back(process.name);
    if (meant.size() > 1)
        throw Misuse("there are several: name one as " + meant.front() + " or " + meant.back());
    if (meant.empty() || !driver.kill(meant.front()))
        throw std::runtime_error("no program \"" + wanted + "\" runs (panel ps lists them)");
    std::printf("Killed %s\n", meant.front().c_str());
}

void addKill(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("kill", "End a program as a crash would: its exit code is 3221225477");
    auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "TarvexHelper.exe#2, or TarvexHelper.exe if only one runs")->required();
    command->callback([name, &tool] { kill(tool.panel(), *name); });
}

} // namespace

void addProcessCommands(CLI::App& app, Tool& tool) {
    addPs(app, tool);
    addWait(app, tool);
    addKill(app, tool);
}

} // namespace tool
