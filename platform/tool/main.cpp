// The panel command.
#include "platform/tool/Commands.h"
#include "platform/tool/Interruption.h"
#include "platform/tool/Units.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string_view>

namespace {

constexpr const char* description = "Makes a simulated operator panel and works with it.";

constexpr const char* examples = R"(
Begin with:
  panel create my-panel
  panel -C my-panel boot
  panel -C my-panel plug FOLDER --as "Hard Disk"
  panel -C my-panel start "\Hard Disk\Tarvex\TarvexHelper.exe"
  panel -C my-panel log --follow
  panel -C my-panel status

Durations are 1500, 1500ms, 5s, 2min or 1h, in the panel's time.
On a panel booted with --stepped, time moves only while one of these commands waits: advance, start --wait, send,
touch, wait, log --until. "advance 0ms" lets no time pass: it returns when all programs wait.
)";

// The first word that names a command; empty if none does.
std::string_view commandOf(const CLI::App& app, int argc, char** argv) {
    for (int index = 1; index < argc; ++index)
        for (const CLI::App* command : app.get_subcommands({}))
            if (command->get_name() == argv[index] && argv[index - 1] != std::string_view("-C"))
                return argv[index];
    return {};
}

} // namespace

int main(int argc, char** argv) {
    tool::endDriverWhenInterrupted();
    CLI::App app{description, "panel"};
    app.require_subcommand(0, 1);
    app.fallthrough(); // -C may stand behind the command too
    tool::Tool shared(app);
    tool::addPowerCommands(app, shared);
    tool::addDiskCommands(app, shared);
    tool::addDeviceCommand(app, shared);
    tool::addTagCommands(app, shared);
    tool::addOperatorCommands(app, shared);
    tool::addStartCommand(app, shared);
    tool::addProcessCommands(app, shared);
    tool::addSendCommand(app, shared);
    tool::addStatusCommand(app, shared);
    tool::addRegistryCommands(app, shared);
    tool::addFileCommands(app, shared);
    tool::addLogCommand(app, shared);
    tool::addTraceCommands(app, shared);
    tool::addFaultCommands(app, shared);
    app.footer(examples); // last: the commands do not inherit it then
    char** end = argv + argc;
    if (commandOf(app, argc, argv) == "start") { // what is behind its "--" is the program's
        end = std::find(argv, end, std::string_view("--"));
        shared.behindDashes.assign(std::min(end + 1, argv + argc), argv + argc);
    }
    try {
        app.parse(static_cast<int>(end - argv), argv);
        if (app.get_subcommands().empty()) {
            std::fputs(app.help().c_str(), stderr);
            return tool::wrongUsage;
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error); // --help
        tool::complain(std::string(error.what()) + " (--help shows what is possible)");
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
