#include "platform/tool/Commands.h"
#include "platform/tool/FaultOptions.h"
#include "platform/tool/FileTail.h"
#include "platform/tool/Follow.h"
#include "platform/tool/OutputFile.h"
#include "platform/tool/Period.h"
#include "platform/tool/Progress.h"
#include "platform/tool/TraceEvents.h"
#include "platform/tool/TraceFile.h"
#include "platform/tool/TraceFilter.h"
#include "platform/tool/TraceLine.h"
#include "platform/tool/Units.h"

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

// What `trace show` and `trace export` have in common: which calls are meant.
struct Selection {
    Period period;
    TraceFilter filter;
};

struct ShowOptions {
    bool follow = false;
    bool json = false;
    Selection selection;
};

// Complains if the last line is the one that ends a trace at its limit.
void checkEnd(const std::string& line) {
    const std::size_t note = line.find("the trace ends here: ");
    if (note != std::string::npos && !TraceLine::parse(line))
        complain(line.substr(note));
}

void printLine(const std::string& line, const ShowOptions& options) {
    if (!options.selection.filter.admits(line))
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

TraceFilter filterOf(const panel::Panel& panel, const Selection& selection) {
    TraceFilter filter = selection.filter;
    filter.ended = selection.period.sinceBoot(panel);
    for (const std::string& function : filter.functions)
        checkFunction(function);
    return filter;
}

std::filesystem::path traceFile(const panel::Panel& panel) {
    return panel.directory() / "run/trace";
}

void show(const panel::Panel& panel, ShowOptions options) {
    options.selection.filter = filterOf(panel, options.selection);
    if (FileTail tail; options.follow)
        return followWhileOn(panel, [&] {
            std::string last;
            for (const std::string& line : tail.newLines(traceFile(panel)))
                printLine(last = line, options);
            checkEnd(last);
            std::fflush(stdout);
        });
    TraceFile trace(panel);
    trace.read([&](const std::string& line, std::uint64_t) { printLine(line, options); });
    checkEnd(trace.lastLine());
}

void exportTo(const std::string& file, const panel::Panel& panel, const Selection& selection) {
    constexpr std::size_t most = 1 << 16; // bytes in one write
    const TraceFilter filter = filterOf(panel, selection);
    TraceFile trace(panel);
    OutputFile output(file);
    std::string text;
    const auto write = [&](std::string_view part) {
        text += part;
        if (text.size() < most)
            return;
        output.write(text);
        text.clear();
    };
    const std::size_t calls = [&] {
        Progress progress;
        return writeTraceEvents(trace, filter, write, [&](double done) {
            progress.show([&] { return std::to_string(static_cast<int>(done * 100)) + " % of the trace"; });
        });
    }();
    output.write(text);
    checkEnd(trace.lastLine());
    output.finish(std::to_string(calls) + " calls");
}

void addSelection(CLI::App& command, Selection& selection) {
    command.add_option("--function", selection.filter.functions, "Only calls of these functions")->type_name("NAME");
    command
        .add_option("--process", selection.filter.processes,
                    "Only these processes: TarvexHelper.exe, or TarvexHelper.exe#2")
        ->type_name("NAME");
    command.add_option("--thread", selection.filter.thread, "Only the thread of this number")->type_name("N");
    command.add_flag("--failed", selection.filter.failuresOnly, "Only calls that left an error");
    selection.period.addTo(command, "calls that ended (or began, if they have not returned)");
}

void addShow(CLI::App& trace, Tool& tool) {
    auto* command = trace.add_subcommand(
        "show", "Print the trace, and the calls that have not returned; also works while the panel is off");
    auto options = std::make_shared<ShowOptions>();
    command->add_flag("--follow", options->follow, "Print new lines until the panel is switched off");
    addSelection(*command, options->selection);
    command->add_flag("--json", options->json, "Print each call as a line of JSON");
    command->callback([options, &tool] { show(tool.panel(), *options); });
}

void addExport(CLI::App& trace, Tool& tool) {
    auto* command =
        trace.add_subcommand("export", "Write the trace, and the calls that have not returned, to a file in "
                                       "the Trace Event Format, for trace viewers");
    auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "File on this machine, such as trace.json; it is replaced")->required();
    auto selection = std::make_shared<Selection>();
    addSelection(*command, *selection);
    command->callback([file, selection, &tool] { exportTo(*file, tool.panel(), *selection); });
}

void switchOn(const panel::Panel& panel, std::uint64_t bytes) {
    const std::uint64_t limit = bytes ? bytes / 1024 + (bytes % 1024 != 0) : panel::noTraceLimit;
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(traceFile(panel), missing);
    if (bytes && !missing && size >= bytes)
        throw std::runtime_error("the trace has " + std::to_string(size) + " bytes already, and its limit is " +
                                 std::to_string(bytes) + " (--limit allows more, panel trace clear deletes the lines)");
    panel::Driver(panel).setTracing(true,
                                    static_cast<std::uint32_t>(std::min<std::uint64_t>(limit, panel::noTraceLimit)));
}

void addOn(CLI::App& trace, Tool& tool) {
    auto* command = trace.add_subcommand("on", "Record from now on; existing lines are kept");
    auto limit = std::make_shared<std::uint64_t>(std::uint64_t{panel::defaultTraceLimit} * 1024);
    command
        ->add_option("--limit", *limit,
                     "Size of the trace at which it switches itself off, such as 500KiB or 1GiB; default: 64MiB; 0: no "
                     "limit")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false).description(""))
        ->transform([](const std::string& size) { // runs first
            return size.starts_with('-') ? throw CLI::ValidationError("not a size: " + size) : size;
        });
    command->callback([limit, &tool] { switchOn(tool.panel(), *limit); });
}

} // namespace

void addTraceCommands(CLI::App& app, Tool& tool) {
    auto* trace = app.add_subcommand("trace", "Record the platform calls of all programs");
    trace->require_subcommand(1);
    addOn(*trace, tool);
    trace->add_subcommand("off", "Stop recording")->callback([&tool] {
        panel::Driver(tool.panel()).setTracing(false);
    });
    addShow(*trace, tool);
    addExport(*trace, tool);
    trace->add_subcommand("clear", "Delete the recorded lines")->callback([&tool] {
        std::filesystem::remove(tool.panel().directory() / "run/trace");
    });
}

} // namespace tool
