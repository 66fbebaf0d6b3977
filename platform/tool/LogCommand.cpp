#include "platform/tool/Commands.h"
#include "platform/tool/Follow.h"
#include "platform/tool/HelperLog.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

struct LogOptions {
    bool follow = false;
    std::string until;
    std::size_t skip = 0;
    std::string limit = "1min";
};

class Printer {
public:
    Printer(const panel::Panel& panel, const LogOptions& options)
        : log(panel), wanted(options.until), skip(options.skip) {}

    // Prints the new lines. Stops behind the first line with the wanted text, and returns whether it was found.
    bool print() {
        for (const std::string& line : log.newLines()) {
            ++lines;
            if (lines <= skip)
                continue;
            const auto time = line.find(';');
            const bool error = time != std::string::npos && line.compare(time, 7, ";ERROR;") == 0;
            std::printf("%s\n", toned(line, error ? Tone::bad : Tone::plain).c_str());
            if (!wanted.empty() && line.find(wanted) != std::string::npos)
                found = true;
            if (found)
                break;
        }
        std::fflush(stdout);
        return found;
    }

    std::size_t lines = 0;

private:
    HelperLog log;
    std::string wanted;
    std::size_t skip;
    bool found = false;
};

void printUntil(Tool& tool, const panel::Panel& panel, const LogOptions& options) {
    const std::uint32_t limit = parseLimit(options.limit);
    Printer printer(panel, options);
    panel::Driver driver(panel);
    bool found = false;
    driver.waitUntil([&] { return (found = printer.print()) || !driver.isOn(); }, limit);
    if (found)
        return;
    if (!driver.isOn())
        throw std::runtime_error("the panel was switched off, and the log does not say \"" + options.until + "\"");
    complain("the log does not say \"" + options.until + "\" after " + formatDuration(limit) +
             " (--limit allows more)");
    tool.exitCode = limitPassed;
}

void show(Tool& tool, const LogOptions& options) {
    const panel::Panel panel = tool.panel();
    if (!options.until.empty())
        return printUntil(tool, panel, options);
    Printer printer(panel, options);
    if (options.follow)
        return followWhileOn(panel, [&] { printer.print(); });
    printer.print();
    if (printer.lines == 0)
        complain("the helper has not written a log yet");
}

} // namespace

void addLogCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("log", "Show the helper's log, oldest line first");
    auto options = std::make_shared<LogOptions>();
    auto* follow = command->add_flag("--follow", options->follow, "Print new lines until the panel is switched off");
    auto* until = command->add_option("--until", options->until, "Let panel time pass until a line contains this text")
                      ->type_name("TEXT");
    command->add_option("--skip", options->skip, "Skip this number of lines")->type_name("N");
    command->add_option("--limit", options->limit, "Time-out of --until; exit code 124 if it passes")
        ->type_name("DURATION")
        ->capture_default_str();
    until->excludes(follow);
    command->callback([options, &tool] { show(tool, *options); });
}

} // namespace tool
