#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/ProcessName.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"
#include "platform/tool/Unreturned.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

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

void kill(const panel::Panel& panel, const std::string& wanted, bool json) {
    panel::Driver driver(panel);
    std::vector<std::string> meant;
    for (const auto& process : driver.status().processes)
        if (!process.driver && namesProcess(wanted, process.name))
            meant.push_back(process.name);
    if (meant.size() > 1)
        throw Misuse("there are several: name one as " + meant.front() + " or " + meant.back());
    if (meant.empty() || !driver.kill(meant.front()))
        throw std::runtime_error("no program \"" + wanted + "\" runs (panel ps lists them)");
    if (json)
        return printJson({{"killed", meant.front()}});
    std::printf("Killed %s\n", meant.front().c_str());
}

void addKill(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("kill", "End a program as a crash would: its exit code is 3221225477");
    auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "TarvexHelper.exe#2, or TarvexHelper.exe if only one runs")->required();
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Answer in JSON");
    command->callback([name, json, &tool] { kill(tool.panel(), *name, *json); });
}

} // namespace

void addProcessCommands(CLI::App& app, Tool& tool) {
    addPs(app, tool);
    addKill(app, tool);
}

} // namespace tool
