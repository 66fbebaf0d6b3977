#include "platform/tool/Commands.h"
#include "platform/tool/FaultOptions.h"
#include "platform/tool/FileTail.h"
#include "platform/tool/Follow.h"
#include "platform/tool/TraceFilter.h"
#include "platform/tool/TraceLine.h"
#include "platform/tool/Units.h"
#include "platform/tool/Unreturned.h"

#include "platform/panel/DidYouMean.h"
#include "platform/panel/Json.h"
#include "platform/panel/Text.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

struct ShowOptions {
    bool follow = false;
    bool json = false;
    std::string from;
    std::string to;
    TraceFilter filter;
};

void printLine(const std::string& line, const ShowOptions& options) {
    if (!options.filter.admits(line))
        return;
    if (!options.json) {
        std::printf("%s\n", line.c_str());
        return;
    }
    const TraceLine call = TraceLine::parse(line).value(); // the filter admits no other text
    printJsonLine({{"time", call.time},
                   {"process", call.process},
                   {"thread", call.thread},
                   {"function", call.function},
                   {"call", call.call},
                   {"arguments", call.arguments},
                   {"returned", call.returned},
                   {"result", call.result},
                   {"failed", call.failed},
                   {"took", call.took}});
}

// Throws unless the platform has this function. Case does not count.
void checkFunction(const std::string& name) {
    const std::vector<std::string> known = functionNames();
    if (std::none_of(known.begin(), known.end(), [&](const auto& each) { return panel::equalCaseBlind(each, name); }))
        throw Misuse("the platform has no function \"" + name + '"' + panel::didYouMean(name, known) +
                     " (panel fault functions lists them)");
}

void show(const panel::Panel& panel, ShowOptions options) {
    if (!options.from.empty())
        options.filter.from = parseDuration(options.from);
    if (!options.to.empty())
        options.filter.to = parseDuration(options.to);
    for (const std::string& function : options.filter.functions)
        checkFunction(function);
    const std::filesystem::path file = panel.directory() / "run/trace";
    if (!options.follow && !std::filesystem::exists(file))
        throw std::runtime_error("nothing is traced yet (panel trace on switches the trace on)");
    FileTail trace;
    const auto print = [&] {
        for (const std::string& line : trace.newLines(file))
            printLine(line, options);
        std::fflush(stdout);
    };
    if (options.follow)
        return followWhileOn(panel, print);
    print();
    if (panel.isOn())
        for (const std::string& line : unreturnedCalls(panel::Driver(panel).status()))
            printLine(line, options);
}

void addShow(CLI::App& trace, Tool& tool) {
    auto* command = trace.add_subcommand(
        "show", "Print the trace, and the calls that have not returned; also works while the panel is off");
    auto options = std::make_shared<ShowOptions>();
    command->add_flag("--follow", options->follow, "Print new lines until the panel is switched off");
    command->add_option("--function", options->filter.functions, "Only calls of these functions")->type_name("NAME");
    command
        ->add_option("--process", options->filter.processes,
                     "Only these processes: TarvexHelper.exe, or TarvexHelper.exe#2")
        ->type_name("NAME");
    command->add_option("--thread", options->filter.thread, "Only the thread of this number")->type_name("N");
    command->add_flag("--failed", options->filter.failuresOnly, "Only calls that left an error");
    command->add_option("--from", options->from, "Only calls that ended from this panel time on, counted from boot")
        ->type_name("DURATION");
    command->add_option("--to", options->to, "Only calls that ended until this panel time")->type_name("DURATION");
    command->add_flag("--json", options->json, "Print each call as a line of JSON");
    command->callback([options, &tool] { show(tool.panel(), *options); });
}

} // namespace

void addTraceCommands(CLI::App& app, Tool& tool) {
    auto* trace = app.add_subcommand("trace", "Record the platform calls of all programs");
    trace->require_subcommand(1);
    trace->add_subcommand("on", "Record from now on; existing lines are kept")->callback([&tool] {
        panel::Driver(tool.panel()).setTracing(true);
    });
    trace->add_subcommand("off", "Stop recording")->callback([&tool] {
        panel::Driver(tool.panel()).setTracing(false);
    });
    addShow(*trace, tool);
    trace->add_subcommand("clear", "Delete the recorded lines")->callback([&tool] {
        std::filesystem::remove(tool.panel().directory() / "run/trace");
    });
}

} // namespace tool
