#include "platform/panel/Json.h"
#include "platform/tool/Commands.h"
#include "platform/tool/Table.h"
#include "platform/tool/Units.h"

#include "platform/panel/Client.h"
#include "platform/panel/Text.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tool {

namespace {

struct SendOptions {
    std::string window;
    std::string message;
    std::string wParam;
    std::string lParam = "0";
    std::string limit = "20s";
    bool post = false;
    bool force = false;
    bool json = false;
};

// Reads a message parameter. It has 32 bits on a panel; signed and unsigned numbers are accepted.
std::int64_t parameter(const std::string& text) {
    const std::int64_t value = parseNumber(text);
    if (value < INT32_MIN || value > UINT32_MAX)
        throw Misuse("more than 32 bits: " + text);
    return value;
}

void print(const std::optional<std::int64_t>& result, const SendOptions& options) {
    if (options.json)
        printJson({{"answered", result.has_value()}, {"result", result ? panel::Json(*result) : nullptr}});
    else if (result)
        std::printf("%lld\n", static_cast<long long>(*result));
}

bool isNumber(const std::string& text) {
    try {
        static_cast<void>(parseNumber(text));
        return true;
    } catch (const Misuse&) {
        return false;
    }
}

// Rejects unknown names: a window also replies to a mistyped message, so the mistake would not be noticed.
void checkMessage(const std::string& message) {
    std::string known;
    for (const std::string& name : panel::registeredMessages()) {
        if (panel::equalCaseBlind(name, message))
            return;
        known += (known.empty() ? "" : ", ") + name;
    }
    throw std::runtime_error("no program has registered a message \"" + message +
                             "\" (known: " + (known.empty() ? "none" : known) + "; --force sends it nevertheless)");
}

void send(Tool& tool, const SendOptions& options) {
    const auto wParam = static_cast<std::uint32_t>(parameter(options.wParam));
    const auto lParam = static_cast<std::int32_t>(parameter(options.lParam));
    const std::uint32_t limit = parseLimit(options.limit);
    const bool named = !isNumber(options.message);
    const std::int64_t number = named ? 0 : parseNumber(options.message);
    if (number < 0 || number > 0xFFFF)
        throw Misuse("a message's number has 16 bits: " + options.message + " has more");
    const panel::Driver driver(tool.panel());
    const std::uint32_t window = panel::findWindow(options.window);
    if (!window)
        throw std::runtime_error("no window of class " + options.window + " (panel status lists the windows)");
    if (!options.force && named)
        checkMessage(options.message);
    if (options.post)
        return panel::postMessage(window, options.message, wParam, lParam);
    const auto result = panel::sendMessage(window, options.message, wParam, lParam, limit);
    print(result, options);
    if (result)
        return;
    const bool gone = panel::findWindow(options.window) != window;
    complain(options.window +
             (gone ? " was destroyed without an answer" : " did not answer within " + formatDuration(limit)));
    tool.exitCode = gone ? failed : limitPassed;
}

} // namespace

void addSendCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("send", "Send a message to a window, and print the window procedure's result");
    auto options = std::make_shared<SendOptions>();
    command->add_option("CLASS", options->window, "The window's class, such as ORVATarvexHelper")->required();
    command->add_option("MESSAGE", options->message, "The registered message's name, or a number")->required();
    command->add_option("WPARAM", options->wParam, "A number; the helper's command codes go here")->required();
    command->add_option("LPARAM", options->lParam, "A number")->capture_default_str();
    command->add_flag("--post", options->post, "Post the message: do not wait for a result");
    command->add_flag("--force", options->force, "Send the message even if no program has registered it");
    command->add_option("--limit", options->limit, "Time-out for the result; exit code 124 if it passes")
        ->type_name("DURATION")
        ->capture_default_str();
    command->add_flag("--json", options->json, "Answer in JSON");
    command->callback([options, &tool] { send(tool, *options); });
}

} // namespace tool
