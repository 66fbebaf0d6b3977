// The entry point of the `panel` command.
#include "platform/panel/DidYouMean.h"
#include "platform/panel/Watcher.h"
#include "platform/panel/kernel/Patience.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Interruption.h"
#include "platform/tool/Units.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace {

constexpr const char* description = "Creates and controls a simulated operator panel.";

constexpr const char* examples = R"(
Begin with:
  panel create my-panel
  panel -C my-panel boot
  panel -C my-panel plug FOLDER --as "Hard Disk"
  panel -C my-panel start "\Hard Disk\Tarvex\TarvexHelper.exe"
  panel -C my-panel log --follow
  panel -C my-panel status

A duration is 1500, 1500ms, 5s, 2min, 1h30min or 7d, in panel time (--patience: in real time).
After boot --stepped, panel time moves only while one of these commands waits: advance, start --wait, send, touch,
wait, log --until. "advance 0ms" lets no time pass: it returns when all programs wait.
)";

// Returns the first word that names a command, or "".
std::string_view commandOf(const CLI::App& app, int argc, char** argv) {
    for (int index = 1; index < argc; ++index)
        for (const CLI::App* command : app.get_subcommands({}))
            if (command->get_name() == argv[index] && argv[index - 1] != std::string_view("-C"))
                return argv[index];
    return {};
}

// The parser takes "[a,b]" as a list, "a" and "b", where an option takes several values. A mark before the bracket
// keeps the text of a person as it is.
constexpr char mark = '\x01';

std::string marked(const std::string& word) {
    return word.starts_with('[') || word.starts_with(mark) ? mark + word : word;
}

std::string unmarked(std::string word) {
    if (word.starts_with(mark))
        word.erase(0, 1);
    return word;
}

void takeMarks(CLI::App& command) {
    for (CLI::Option* option : command.get_options())
        option->transform(unmarked); // runs before all other checks of the option
    for (CLI::App* below : command.get_subcommands({}))
        takeMarks(*below);
}

// Returns the reason why the words were not understood, with the word that the user may have meant.
std::string reasonOf(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    if (unknown.empty())
        return error.what();
    const CLI::App* command = &app;
    std::vector<std::string> known;
    const auto addOptions = [&](const CLI::App& owner) {
        for (const CLI::Option* option : owner.get_options({}))
            for (const std::string& name : option->get_lnames())
                known.push_back("--" + name);
    };
    addOptions(app);
    for (; !command->get_subcommands().empty(); addOptions(*command))
        command = command->get_subcommands().front();
    if (!unknown.front().starts_with('-'))
        known.clear();
    for (const CLI::App* below : command->get_subcommands({}))
        known.push_back(below->get_name());
    return "\"" + unmarked(unknown.front()) + "\" was not expected" + panel::didYouMean(unknown.front(), known);
}

const tool::Tool* current;

// Called by a wait that would never end. Ends the process at once, since other threads may wait for ever, too.
[[noreturn]] void giveUp(const std::string& why) {
    tool::complain(why + " (--patience allows more)");
    _exit(current->failureCode);
}

void limitPatience(const tool::Tool& tool, const std::string& duration) {
    constexpr std::uint64_t longest = 0x7FFFFFFF;
    current = &tool;
    panel::patience::limit = {static_cast<std::uint32_t>(std::min(tool::parseDuration(duration), longest)), giveUp};
}

} // namespace

int main(int argc, char** argv) {
    tool::endDriverWhenInterrupted();
    panel::Watcher::endWhenTruncated();
    CLI::App app{description, "panel"};
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", tool::version(), "Print the version of the simulation and exit");
    tool::Tool shared(app);
    std::string patience = "30s";
    app.add_option("--patience", patience,
                   "Time-out in real time for a program or command that keeps the panel from moving on; 0: no time-out")
        ->type_name("DURATION")
        ->envname("PANEL_PATIENCE")
        ->capture_default_str();
    app.parse_complete_callback([&] { limitPatience(shared, patience); });
    app.fallthrough(); // allows -C behind the command, too
    tool::addPowerCommands(app, shared);
    tool::addDiskCommands(app, shared);
    tool::addDeviceCommand(app, shared);
    tool::addTagCommands(app, shared);
    tool::addOperatorCommands(app, shared);
    tool::addStartCommand(app, shared);
    tool::addProcessCommands(app, shared);
    tool::addWaitCommand(app, shared);
    tool::addSendCommand(app, shared);
    tool::addStatusCommand(app, shared);
    tool::addRegistryCommands(app, shared);
    tool::addFileCommands(app, shared);
    tool::addLogCommand(app, shared);
    tool::addTraceCommands(app, shared);
    tool::addFaultCommands(app, shared);
    tool::addReportCommand(app, shared);
    tool::addCompletionCommand(app);
    tool::addViewCommand(app, shared);
    app.footer(examples); // last, so that the commands do not inherit the footer
    char** end = argv + argc;
    if (commandOf(app, argc, argv) == "start") { // the words behind "--" belong to the started program
        end = std::find(argv, end, std::string_view("--"));
        shared.behindDashes.assign(std::min(end + 1, argv + argc), argv + argc);
    }
    try {
        takeMarks(app);
        std::vector<std::string> words; // the parser wants the last one first
        std::transform(std::reverse_iterator(end), std::reverse_iterator(argv + std::min(argc, 1)),
                       std::back_inserter(words), marked);
        app.parse(words);
        if (app.get_subcommands().empty()) {
            std::fputs(app.help().c_str(), stderr);
            return tool::wrongUsage;
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help
        tool::complain(reasonOf(app, error) + " (--help shows what is possible)");
        return tool::wrongUsage;
    } catch (const tool::Misuse& error) {
        tool::complain(error.what());
        return tool::wrongUsage;
    } catch (const std::exception& error) {
        tool::complain(error.what());
        return shared.failureCode;
    }
    return shared.exitCode;
}
