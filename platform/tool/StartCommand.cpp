#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include "platform/panel/Watcher.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

namespace tool {

namespace {

constexpr const char* help = R"(
panel start [OPTIONS] PATH [ARGUMENTS...]; put arguments that look like options of this command behind a --.
Without --wait the program begins when this command ends.
Exit codes with --wait: 0 to 123: the program's own exit code; 124: the program still runs after the time-out; 125: the
program could not be started; 126: the program's exit code is above 123 (it is printed).
)";

constexpr std::uint32_t largestCode = 123;

struct StartOptions {
    std::string path;
    bool wait = false;
    bool json = false;
    std::string limit = "1min";
};

// Joins the arguments into one string, as the platform passes it.
std::string commandLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        const bool quote = word.empty() || word.find(' ') != std::string::npos;
        line += (line.empty() ? "" : " ") + (quote ? '"' + word + '"' : word);
    }
    return line;
}

// Returns the output of the program.
std::string output(const panel::Panel& panel, const std::string& process) {
    std::ifstream file(panel.directory() / "run/output" / process, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void report(const std::string& process, const std::optional<std::uint32_t>& code, const std::string& printed,
            bool json) {
    if (json) {
        panel::Json answer{{"name", process}, {"running", !code}};
        if (code) {
            answer["exitCode"] = *code;
            answer["output"] = printed;
        }
        printJson(answer);
        return;
    }
    std::fputs(printed.c_str(), stdout);
    if (code)
        std::printf("%s ended with exit code %s\n", process.c_str(),
                    toned(std::to_string(*code), *code ? Tone::bad : Tone::good).c_str());
}

void start(Tool& tool, const StartOptions& options, const std::vector<std::string>& arguments) {
    const panel::Panel panel = tool.panel();
    const std::uint32_t limit = parseLimit(options.limit);
    panel::Driver driver(panel, panel::Driver::command, panel::Driver::Programs::stay);
    const panel::ProcessHandle process = driver.start(options.path, commandLine(arguments));
    if (!options.json)
        std::printf("%s\n", toned(process.name, Tone::strong).c_str());
    std::fflush(stdout);
    if (!options.wait) {
        if (options.json)
            report(process.name, std::nullopt, {}, true);
        return;
    }
    const auto code = driver.waitForExit(process, limit);
    if (code && driver.isOn())
        driver.waitForLingering();
    report(process.name, code, code ? output(panel, process.name) : "", options.json);
    if (!driver.isOn())
        complain("the panel was switched off meanwhile");
    else if (!code)
        complain(process.name + " still runs after " + formatDuration(limit) + " (--limit allows more)");
    tool.exitCode = !driver.isOn()         ? tool.failureCode
                    : !code                ? limitPassed
                    : *code <= largestCode ? static_cast<int>(*code)
                                           : codeTooLarge;
}

} // namespace

void addStartCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("start", "Start a program of the panel, and print its process name");
    auto options = std::make_shared<StartOptions>();
    command->add_option("PATH", options->path, "The program, such as \"\\Hard Disk\\Tarvex\\TarvexHelper.exe\"")
        ->required();
    command->add_flag("--wait", options->wait, "Wait for the end of the program, and print its output and exit code");
    command->add_option("--limit", options->limit, "Time-out of --wait")->type_name("DURATION")->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->prefix_command();
    command->fallthrough(false); // the program's arguments are not options of panel
    command->footer(help);
    command->callback([options, command, &tool] {
        tool.failureCode = options->wait ? notStarted : failed;
        panel::Watcher::exitCode = tool.failureCode;
        std::vector<std::string> words = command->remaining();
        words.insert(words.end(), tool.behindDashes.begin(), tool.behindDashes.end());
        start(tool, *options, words);
    });
}

} // namespace tool
