#include "platform/tool/Commands.h"
#include "platform/tool/Follow.h"
#include "platform/tool/HelperLog.h"
#include "platform/tool/Period.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include "platform/panel/Json.h"
#include "platform/panel/Text.h"

#include <algorithm>
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
    std::string level;
    Period period;
    bool json = false;
};

// The parts of a line: "2024-03-07 06:05:09,8532110;INFO;Init of Helper". A line without these parts, such as one that
// a power cut has torn, has text only.
struct LogLine {
    std::int64_t time = 0; // ms since 1970 UTC
    std::string date;
    std::string ticks;
    std::string level;
    std::string text;

    explicit LogLine(const std::string& line) : text(line) {
        constexpr std::size_t dateLength = 19;
        const std::size_t first = line.find(';');
        const std::size_t second = line.find(';', std::min(first, line.size() - 1) + 1);
        if (second == std::string::npos || first <= dateLength || line[dateLength] != ',')
            return;
        try {
            time = parseDate(line.substr(0, dateLength));
        } catch (const Misuse&) {
            return;
        }
        date = line.substr(0, dateLength);
        ticks = line.substr(dateLength + 1, first - dateLength - 1);
        level = line.substr(first + 1, second - first - 1);
        text = line.substr(second + 1);
    }
};

// The lines that the user wants to see.
class LogFilter {
public:
    LogFilter(const panel::Panel& panel, const LogOptions& options)
        : level(options.level), period(options.period.logDates(panel)) {}

    // A line without a date and a level belongs to the line before it.
    bool admits(const LogLine& line) {
        if (line.level.empty())
            return admitted;
        return admitted = (level.empty() || panel::equalCaseBlind(level, line.level)) &&
                          (period.isUnlimited() || period.contains(line.time));
    }

private:
    std::string level;
    Period::Span period; // ms since 1970 UTC
    bool admitted = true;
};

class Printer {
public:
    Printer(const panel::Panel& panel, const LogOptions& options)
        : log(panel), filter(panel, options), wanted(options.until), skip(options.skip), json(options.json) {}

    // Prints the new lines. Stops behind the first line with the wanted text, and returns whether it was found.
    bool print() {
        for (const std::string& line : log.newLines()) {
            ++lines;
            if (lines <= skip)
                continue;
            const LogLine parts(line);
            if (!filter.admits(parts))
                continue;
            std::uint32_t ticks = 0;
            panel::numberIn(parts.ticks, ticks);
            if (json)
                printJsonLine({{"date", parts.date}, {"ticks", ticks}, {"level", parts.level}, {"text", parts.text}});
            else
                std::printf("%s\n", toned(line, parts.level == "ERROR" ? Tone::bad : Tone::plain).c_str());
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
    LogFilter filter;
    std::string wanted;
    std::size_t skip;
    bool json;
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
    command->add_option("--level", options->level, "Only lines of this level")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"INFO", "ERROR"}, CLI::ignore_case));
    options->period.addTo(*command, "lines");
    command->add_flag("--json", options->json, "Print each line as JSON");
    command->callback([options, &tool] { show(tool, *options); });
}

} // namespace tool
